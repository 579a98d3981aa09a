"""Reads plain exports back with programs that know nothing of this project.

readback.py FOLDER: each folder in it holds expected.json and the exports of one window: waves.csv and
waves.vcd, and what fst2vcd makes of waves.fst in again.vcd. Prints the first difference and ends with
status 1, or prints how many values were compared.
"""

import csv
import json
import pathlib
import re
import subprocess
import sys


class Difference(Exception):
    pass


def check(truth, *what):
    if not truth:
        raise Difference(" ".join(str(part)[:300] for part in what))


class Dump:
    """A value change dump by the standard: tokens between blanks, nothing else."""

    def __init__(self, path):
        tokens = path.read_bytes().decode().split()
        self.variables = []  # (identifier, width, path of names)
        self.changes = []  # (time, {identifier: value})
        scopes = []
        place = 0
        while place < len(tokens):
            token = tokens[place]
            place += 1
            if token in ("$dumpvars", "$end"):
                continue
            if token.startswith("$"):
                end = tokens.index("$end", place)
                words = tokens[place:end]
                place = end + 1
                if token == "$timescale":
                    self.timescale = "".join(words)
                elif token == "$scope":
                    check(len(words) == 2, path, words)
                    scopes.append(words[1])
                elif token == "$upscope":
                    scopes.pop()
                elif token == "$var":
                    check(words[0] == "wire" and 4 <= len(words) <= 5, path, words)
                    name = ".".join(scopes + ["".join(words[3:])])
                    self.variables.append((words[2], int(words[1]), name))
            elif token[0] == "#":
                self.changes.append((int(token[1:]), {}))
            elif token[0] in "bB":
                self.changes[-1][1][tokens[place]] = token[1:]
                place += 1
            else:
                self.changes[-1][1][token[1:]] = token[0]

    def samples(self, count, steps):
        """Of each variable the values at all samples, as strings of its width."""
        columns = [[] for _ in self.variables]
        now = {}
        changes = iter(self.changes)
        time, values = next(changes)
        for i in range(count):
            while time is not None and time <= i * steps:
                check(time % steps == 0, "a change between samples at", time)
                now.update(values)
                time, values = next(changes, (None, None))
            for column, (identifier, width, _) in zip(columns, self.variables):
                value = now[identifier]
                column.append(value.rjust(width, "x" if value[0] == "x" else "0"))
        return columns


def picoseconds(text):
    number, unit = re.fullmatch(r"(10{0,2})(s|ms|us|ns|ps)", text).groups()
    return int(number) * 10 ** (3 * ("ps", "ns", "us", "ms", "s").index(unit))


def letters(text):
    return re.sub(r"[\W_]", "", text)


def check_names(dump, titles):
    names = [name for _, _, name in dump.variables]
    check(len(set(names)) == len(names), "names are equal:", names)
    for name, title in zip(names[1:], titles):
        numbered = re.sub(r"_\d+(?=\[|$)", "", name)
        check(any(letters(n).startswith("top" + letters(title)) for n in (name, numbered)),
              name, "is no name for", title)
        if re.fullmatch("[a-z]+(/[a-z]+)*", title) and name == numbered:
            check(name.split("[")[0] == "top." + title.replace("/", "."), name, "is no", title)


def check_dump(path, expected):
    dump = Dump(path)
    steps, rest = divmod(expected["picoseconds"], picoseconds(dump.timescale))
    check(rest == 0, "timescale", dump.timescale)
    check(dump.changes[-1][0] == expected["samples"] * steps, "ends at", dump.changes[-1][0])
    return dump, dump.samples(expected["samples"], steps), steps


def check_vcd(folder, expected):
    columns = expected["columns"]
    dump, values, steps = check_dump(folder / "waves.vcd", expected)

    def position(identifier):
        return sum((ord(c) - 33) * 94 ** i for i, c in enumerate(identifier))

    # Scopes have their variables together, whatever the order of the rows; identifiers tell that.
    order = sorted(range(len(dump.variables)), key=lambda i: position(dump.variables[i][0]))
    again, more, _ = check_dump(folder / "again.vcd", expected)
    strip = [variable[1:] for variable in dump.variables]
    check([variable[1:] for variable in again.variables] == strip, "FST has", again.variables, strip)
    check(more == values, "FST has other values")
    dump.variables = [dump.variables[i] for i in order]
    values = [values[i] for i in order]
    check_names(dump, [column["title"] for column in columns])
    trigger = ["01"[i == expected["trigger"]] for i in range(expected["samples"])]
    check([dump.variables[0][2], values[0]] == ["top.trigger", trigger], "trigger", values[0])
    check(len(values) == len(columns) + 1, len(values), "variables")
    for (_, width, name), got, column in zip(dump.variables[1:], values[1:], columns):
        check(width == column["width"], name, "has", width)
        wanted = column["values"] + ["x" * width] * (expected["samples"] - len(column["values"]))
        check(got == wanted, name, "differs:", got, wanted)
    if any(width > 1 for _, width, _ in dump.variables):
        return  # vectors are too much for the reader
    shown = subprocess.run(["sigrok-cli", "-I", f"vcd:downsample={steps}", "-i",
                            folder / "waves.vcd", "-O", "csv"], capture_output=True, check=True)
    text = shown.stdout.decode()
    rows = [line.split(",") for line in text.splitlines() if re.match("[01](,|$)", line)]
    check(len(rows) == expected["samples"], "sigrok-cli reads", len(rows), "samples", text)
    for place, i in enumerate(order):
        got = [row[i] for row in rows]
        wanted = [value.replace("x", "0") for value in values[place]]
        check(got == wanted, "sigrok-cli reads", dump.variables[place], got, wanted)


def number(cell, radix):
    if radix == "signed decimal":
        return int(cell)
    return int(cell, {"binary": 2, "octal": 8, "unsigned decimal": 10}.get(radix, 16))


def check_csv(folder, expected):
    columns = expected["columns"]
    with open(folder / "waves.csv", newline="", encoding="utf-8") as file:
        head, *rows = csv.reader(file, strict=True)
    check(head[:3] == ["sample", "time_" + expected["unit"], "trigger"], head)
    check(len(set(head)) == len(head) == len(columns) + 3, "titles", head)
    for title, column in zip(head[3:], columns):
        wanted = re.sub(r"[\r\n]", " ", column["title"]) or "unnamed"
        if wanted[0] in "=+-@\t":
            wanted = "'" + wanted if expected["disarmed"] else wanted
        check(title == wanted or re.fullmatch(re.escape(wanted) + r"_\d+", title), title, wanted)
    check(len(rows) == expected["samples"], len(rows), "rows")
    for i, row in enumerate(rows):
        lead = [i, i * expected["period"], int(i == expected["trigger"])]
        check(row[:3] == [str(n) for n in lead] and len(row) == len(head), row)
        for cell, column in zip(row[3:], columns):
            if i >= len(column["values"]):
                check(cell == "", "row", i, "has", cell, "behind the end")
                continue
            wanted = int(column["values"][i], 2)
            radix = column["radix"] if column["width"] > 1 else "binary"
            if radix == "signed decimal" and column["values"][i][0] == "1":
                wanted -= 1 << column["width"]
            check(number(cell, radix) == wanted, "row", i, column["title"], cell, wanted)


compared = 0
for folder in sorted(pathlib.Path(sys.argv[1]).iterdir()):
    expected = json.loads((folder / "expected.json").read_text(encoding="utf-8"))
    try:
        check_csv(folder, expected)
        check_vcd(folder, expected)
    except Difference as difference:
        sys.exit(f"{folder}: {difference}")
    compared += sum(len(column["values"]) for column in expected["columns"])
print(compared)
