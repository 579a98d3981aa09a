"""The package against the program and the simulated board; SIGNALSCOPE_CAPTURE names the program."""

import csv
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import unittest.mock
import warnings
from pathlib import Path

import signalscope
from signalscope import Trigger

PYTHON = Path(__file__).resolve().parents[1]
EXAMPLE = PYTHON.parent / "examples" / "uart_fifo"
PROGRAM = os.environ["SIGNALSCOPE_CAPTURE"]
try:
    import numpy
except ImportError:
    numpy = None


class BoardTest(unittest.TestCase):
    """Has a board, and a socket folder that no other server uses, with a short path."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="keo-", dir="/tmp")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.example = self.folder / "uart"
        shutil.copytree(EXAMPLE, self.example)
        self.keo = self.example / "uart_fifo.keo"
        self.environ = {**os.environ, "TMPDIR": folder.name, "QT_QPA_PLATFORM": "offscreen",
                        "SIGNALSCOPE_BOARD": str(self.example / "board.json")}
        before, tempdir = dict(os.environ), tempfile.tempdir
        os.environ.update(self.environ)
        tempfile.tempdir = None

        def restore():
            os.environ.clear()
            os.environ.update(before)
            tempfile.tempdir = tempdir

        self.addCleanup(restore)

    def stub(self, script):
        """A program that behaves as the shell script does."""
        path = self.folder / "stub"
        path.write_text("#!/bin/sh\n" + script)
        path.chmod(0o755)
        return path


class CaptureTest(BoardTest):
    def test_samples_are_those_of_an_export(self):
        self.keo.write_text(self.keo.read_text("utf-8").replace(
            "<Signal>dut/rx_valid<", '<Signal text="été">dut/rx_valid<'), "utf-8")
        project = self.folder / "run.analyzer_prj"
        capture = signalscope.capture(self.keo, device="KR-C", timeout=30, save=project)
        self.assertEqual(capture.project, str(project))
        self.assertIn("Tarno", capture.cable)
        (window,) = capture.windows
        self.assertIs(window["dut/rx_valid"], window["été"])
        self.assertEqual(chr(window["dut/rx_data"].samples[window.trigger]), "H")
        self.assertEqual(window["été"].samples[window.trigger], 1)

        out = self.folder / "out"
        subprocess.run([PROGRAM, "--open", project, "--format", "csv", "--out", out], check=True,
                       stdout=subprocess.DEVNULL)
        (exported,) = out.iterdir()
        with exported.open(encoding="utf-8", newline="") as file:
            lines = list(csv.reader(file, skipinitialspace=True))
        start = next(i for i, line in enumerate(lines) if line and line[0].startswith("time unit"))
        columns = dict(zip(lines[start], zip(*lines[start + 1:])))
        compared = 0
        for row in (*window.signals, *window.buses):
            texts = columns[row.label or row.name]
            values = [int(text, 16 if isinstance(row, signalscope.Bus) else 2)
                      for text in texts if text != "X"]  # the last row tells where the time ends
            self.assertEqual([int(value) for value in row.samples], values, row.name)
            compared += len(values)
        self.assertEqual(compared, 18 * 1024)

        (again,) = signalscope.read_windows(self.folder / "run.xml")
        self.assertEqual(again, window)
        self.assertEqual([list(signal.samples) for signal in again.signals],
                         [list(signal.samples) for signal in window.signals])

    def test_triggers_reach_their_cores(self):
        capture = signalscope.capture(self.keo, device="KR-C", timeout=30, trigger={
            1: Trigger(units={"M2": "==1,count=3"}, expressions="M2", windows=2, amount=64,
                       position=16),
            0: Trigger(units={"M1": "==0x45"})})
        self.assertEqual(sorted((window.core, window.index, len(window), window.trigger)
                                for window in capture.windows),
                         [(0, 0, 1024, 128), (1, 0, 64, 16), (1, 1, 64, 16)])
        zero = next(window for window in capture.windows if window.core == 0)
        self.assertEqual(chr(zero["dut/rx_data"].samples[128]), "E")
        with self.assertRaises(ValueError):
            signalscope.capture(self.keo, trigger=Trigger(), cores=[0, 1])

    def test_a_device_that_is_not_known(self):
        with self.assertWarnsRegex(signalscope.SignalScopeWarning, "Unknown device"):
            signalscope.capture(self.keo, timeout=30)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            signalscope.capture(self.keo, device="KR-C", timeout=30)

    def test_saved_captures(self):
        a, b = self.folder / "a.analyzer_prj", self.folder / "b.analyzer_prj"
        signalscope.capture(self.keo, device="KR-C", timeout=30, save=a)
        shutil.copy(a, b)
        text = b.read_text().replace("a.xml", "b.xml")
        b.write_text(text)
        data = (self.folder / "a.xml").read_text("utf-8")
        (self.folder / "b.xml").write_text(data, "utf-8")
        self.assertTrue(signalscope.compare(a, b).equal)
        (self.folder / "b.xml").write_text(re.sub(r'(text="">)1', r"\g<1>0", data, count=1), "utf-8")
        different = signalscope.compare(a, b, cores=[0])
        self.assertFalse(different.equal)
        self.assertEqual([entry["name"] for entry in different.windows[0]["differences"]],
                         ["dut/rx"])

        rehearsal = signalscope.rehearse(a)
        self.assertTrue(rehearsal.hit)
        self.assertIn(128, [run["first"] for run in rehearsal.windows[0]["hit_runs"]])
        self.assertFalse(signalscope.rehearse(a, Trigger({"M1": "==0x00"})).hit)

        newer = self.folder / "newer.keo"
        newer.write_text(self.keo.read_text().replace('storage_depth="4096"',
                                                      'storage_depth="2048"'))
        self.assertTrue(signalscope.diff(self.keo, self.keo).equal)
        changes = signalscope.diff(self.keo, newer).changes
        self.assertEqual({(change["subject"], change["after"]) for change in changes},
                         {("storage_depth", "2048")})

    def test_example_without_other_packages(self):
        for name in ("numpy", "matplotlib"):
            (self.folder / f"{name}.py").write_text("raise ImportError")
        path = os.pathsep.join([str(self.folder), str(PYTHON)])
        shown = subprocess.run([sys.executable, PYTHON / "examples" / "plot_uart.py", self.keo],
                               env={**self.environ, "PYTHONPATH": path, "PYTHONUTF8": "1"},
                               check=True, capture_output=True, encoding="utf-8").stdout
        self.assertIn("Received after the trigger: 'HELLO FPGA", shown)
        self.assertRegex(shown, r"dut/rx +▁+▔+▁")
        self.assertRegex(shown, r"dut/rx_data .*\|48")


    def test_package_has_the_version_of_the_program(self):
        version = re.search(r'^version = "(.*)"', (PYTHON / "pyproject.toml").read_text("utf-8"),
                            re.MULTILINE)[1]
        told = subprocess.run([PROGRAM, "--version"], check=True, capture_output=True, text=True)
        self.assertIn(version, told.stdout.split())


class FailureTest(BoardTest):
    def test_by_status(self):
        cases = {2: signalscope.UsageError, 3: signalscope.NoServerError,
                 4: signalscope.TimedOutError, 5: signalscope.RefusedError,
                 6: signalscope.FileError, 130: signalscope.Interrupted,
                 143: signalscope.Interrupted, 1: signalscope.ProgramError,
                 77: signalscope.ProgramError}
        for status, kind in cases.items():
            with self.subTest(status=status):
                stub = self.stub(f"echo '{{\"message\": \"it was {status}\"}}'; exit {status}")
                with self.assertRaises(kind) as raised:
                    signalscope.capture("x.keo", program=stub)
                self.assertIs(type(raised.exception), kind)
                self.assertEqual(str(raised.exception), f"it was {status}")
                self.assertEqual(raised.exception.status, status)

    def test_what_really_fails(self):
        never = Trigger({"M1": "==0xFF"})
        cases = [
            (signalscope.UsageError, "no core 7", {"cores": [7]}),
            (signalscope.UsageError, "", {"save": self.folder / "run.txt"}),
            (signalscope.UsageError, "", {"trigger": Trigger({"M0": "nonsense"})}),
            (signalscope.TimedOutError, "Timed out", {"timeout": 0.3, "trigger": never}),
            (TimeoutError, "Timed out", {"timeout": 0.3, "trigger": never}),
            (OSError, "not.keo", {"description": "not.keo"}),
            (signalscope.ProgramNotFoundError, "/not", {"program": "/not"}),
        ]
        for kind, words, changed in cases:
            with self.subTest(changed), self.assertRaisesRegex(kind, words):
                signalscope.capture(**{"description": self.keo, "device": "KR-C", **changed})
        os.environ["SIGNALSCOPE_CAPTURE"] = str(self.folder / "not")
        with self.assertRaises(signalscope.ProgramNotFoundError):
            signalscope.capture(self.keo)

    def test_board_faults(self):
        board = self.example / "board.json"
        whole = json.loads(board.read_text())
        for kind, fault in ((signalscope.RefusedError, {"at": "OPEN", "do": "result", "value": -20}),
                            (signalscope.NoServerError, {"at": "READ_RAM", "do": "die"})):
            whole["cables"]["keo1"]["faults"] = [fault]
            board.write_text(json.dumps(whole))
            with self.subTest(fault), self.assertRaises(kind) as raised:
                signalscope.capture(self.keo, device="KR-C", timeout=30)
            self.assertEqual(raised.exception.document["message"], str(raised.exception))

    def test_unreadable_results(self):
        for script in ("echo nothing", "echo []", "echo '{}'", "printf '\\377'"):
            with self.subTest(script), self.assertRaises(signalscope.ProgramError):
                signalscope.compare("a", "b", program=self.stub(script))
        for text in ("", "<WaveData>", "<KEO_CONFIG/>", "<WaveData><Window index='x'/></WaveData>"):
            path = self.folder / "data.xml"
            path.write_text(text)
            with self.subTest(text), self.assertRaises(signalscope.DataFileError):
                signalscope.read_windows(path)

    def interrupt_when(self, is_time):
        def interrupt():
            while not is_time():
                time.sleep(0.01)
            os.kill(os.getpid(), signal.SIGINT)

        thread = threading.Thread(target=interrupt)
        thread.start()
        self.addCleanup(thread.join)

    def test_an_interruption_closes_the_device(self):
        transcript = self.folder / "transcript"
        program = self.stub(f'exec {PROGRAM} --transcript {transcript} "$@"')
        self.interrupt_when(lambda: transcript.exists() and "READ_START_REG" in
                            transcript.read_text("utf-8"))
        with self.assertRaises(KeyboardInterrupt):
            signalscope.capture(self.keo, device="KR-C", trigger=Trigger({"M1": "==0xFF"}),
                                program=program)
        self.assertIn("CLOSE", transcript.read_text("utf-8"))

    def test_an_interruption_lets_the_program_finish(self):
        started, finished = self.folder / "started", self.folder / "finished"
        stub = self.stub("trap '' INT\n"
                         f"trap 'sleep 0.1; touch {finished}; exit 143' TERM\n"
                         f"touch {started}\nwhile :; do sleep 0.05; done")
        for _ in range(5):  # at the start of the process, too
            self.interrupt_when(started.exists)
            with self.assertRaises(KeyboardInterrupt):
                signalscope.capture("x.keo", program=stub)
            self.assertTrue(finished.exists())
            started.unlink()
            finished.unlink()


class BusTest(unittest.TestCase):
    def test_wide_buses_in_both_forms(self):
        names = [f"b{i}" for i in range(70)]
        rows = {name: f"{i % 2}1{i % 3 // 2}x" for i, name in enumerate(names)}
        text = "<WaveData><Window index='2'><TriggerPosition>1</TriggerPosition><Signals>" + "".join(
            f"<Signal name='{name}' id='{i}' text=''>{rows[name]}</Signal>"
            for i, name in enumerate(names)) + "</Signals><Layout>"
        for bits in (0, 1, 64, 70):
            text += f"<Node type='bus' name='bus{bits}' text='B'>" + "".join(
                f"<Node type='sig' id='{i}'/>" for i in range(bits)) + "</Node>"
        text += "<Node type='sig' id='1'/></Layout></Window></WaveData>"
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "data.xml"
            path.write_text(text)
            forms = [signalscope.read_windows(path)]
            if numpy is not None:
                self.assertEqual(forms[0][0]["bus64"].samples.dtype, numpy.uint64)
                with unittest.mock.patch("signalscope._windows.numpy", None):
                    forms.append(signalscope.read_windows(path))
        for (window,) in forms:
            self.assertEqual((window.core, window.index, window.trigger, len(window)), (0, 2, 1, 4))
            for bits in (1, 64, 70):
                expected = [int("".join(rows[name][i] for name in names[:bits]).replace("x", "0"), 2)
                            for i in range(4)]
                self.assertEqual([int(v) for v in window[f"bus{bits}"].samples], expected, bits)
            self.assertEqual(len(window["bus0"].samples), 0)
            self.assertEqual(bytes(window["b2"].samples), bytes([0, 1, 1, 0]))
            self.assertEqual(window["B"].name, "bus0")
            with self.assertRaises(KeyError):
                window["missing"]


if __name__ == "__main__":
    unittest.main()
