// Exports for programs that know the standards alone, read back by such programs.

#include <export/exportfiles.h>
#include <export/plainnames.h>
#include <support/files.h>
#include <support/testmain.h>
#include <wave_data/windowcontents.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <deque>

using namespace KEO;
using WaveMonitor::BusElement;
using WaveMonitor::DataFormat;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

/// Bits, often the same for a while, and now and then all alike.
QBitArray randomBits(QRandomGenerator &random, int samples)
{
    QBitArray bits(samples);
    const int oneIn = random.bounded(1, 40);
    for (int i = 0; i < samples; ++i)
        bits.setBit(i, i > 0 && random.bounded(oneIn) ? bits.testBit(i - 1) : random.bounded(2));
    return bits;
}

/// Some are like a design's, so that they meet each other; some are what no design has.
QString randomTitle(QRandomGenerator &random)
{
    static const QStringList parts{"dut",  "a",    "b",      "trigger",
                                   "data", "a[3]", "b[7:0]", "data[1:0]"};
    const QString wild = QString::fromUtf8("ab1 \t\"',;/\\[]{}().:#$%=+-@éÄ語\u00a0\n\r");
    QStringList words;
    for (int i = random.bounded(1, 4); i > 0; --i)
        words.append(parts[random.bounded(parts.size())]);
    QString title = words.join(u'/');
    if (random.bounded(3) == 0) {
        title.clear();
        for (int i = random.bounded(8); i > 0; --i)
            title += wild[random.bounded(wild.size())];
    }
    return random.bounded(12) ? title : QStringLiteral("$end");
}

QString run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60'000);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0
               ? QString()
               : program + ": " + process.errorString() + process.readAllStandardError();
}

/// A window, and what a reader must find in its exports.
class RandomWindow final
{
public:
    /// \a widest is the greatest number of bits in a row.
    RandomWindow(QRandomGenerator &random, int samples, int widest)
        : m_random(random), m_samples(samples)
    {
        for (int row = random.bounded(1, 150 / widest + 3); row > 0; --row) {
            const int length = random.bounded(6) ? samples : random.bounded(samples + 1);
            const bool isBus = random.bounded(2);
            const int width = isBus ? random.bounded(1, widest + 1) : 1;
            const QString title = randomTitle(random);
            // The title of a row is the user's, or else that of the signal or bus.
            QString text = random.bounded(2) ? title : QString();
            QString name = text.isEmpty() ? title : QStringLiteral("hidden");
            addRow(isBus, width, length, name, text);
        }
    }

    const WindowContents &contents() const { return m_contents; }

    void writeExpected(const QString &path, const ExportSettings &settings, int trigger) const
    {
        qsizetype samples = 0;
        for (const QJsonValue &column : m_columns)
            samples = std::max(samples, column["values"].toArray().size());
        putFile(path,
                QJsonDocument(QJsonObject{{"columns", m_columns},
                                          {"samples", samples},
                                          {"trigger", trigger},
                                          {"period", settings.period.number},
                                          {"unit", settings.period.unit},
                                          {"picoseconds", settings.period.picoseconds()},
                                          {"disarmed", settings.formulas == Formulas::Disarmed}})
                    .toJson());
    }

private:
    void addRow(bool isBus, int width, int length, const QString &name, const QString &text)
    {
        const auto format = DataFormat::Type(m_random.bounded(6));
        std::deque<SignalElement> elements;
        BusElement bus{.name = name, .text = text, .signals = {}};
        for (int i = 0; i < width; ++i) {
            elements.push_back({.id = m_id++,
                                .name = isBus ? QStringLiteral("member") : name,
                                .text = isBus ? QString() : text,
                                .data = randomBits(m_random, length)});
            bus.signals.append(&elements.back());
        }
        if (isBus)
            m_contents.addBus(bus).format->setType(format);
        else
            m_contents.addSignal(elements.front());
        QJsonArray values;
        for (int i = 0; i < length; ++i) {
            QString value;
            for (const SignalElement &element : elements)
                value += element.data.testBit(i) ? u'1' : u'0';
            values.append(value);
        }
        static const QStringList radixes{"binary",           "octal", "signed decimal",
                                         "unsigned decimal", "hex",   "ASCII"};
        m_columns.append(QJsonObject{{"title", text.isEmpty() ? name : text},
                                     {"width", width},
                                     {"radix", radixes[format]},
                                     {"values", values}});
    }

    QRandomGenerator &m_random;
    int m_samples;
    int m_id = 0;
    WindowContents m_contents;
    QJsonArray m_columns;
};

} // namespace

class tst_PlainExports : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void readBack();
    void names_data();
    void names();
    void converter_data();
    void converter();
};

void tst_PlainExports::readBack()
{
    for (const char *program : {"vcd2fst", "fst2vcd", "sigrok-cli", "python3"}) {
        if (QStandardPaths::findExecutable(program).isEmpty())
            QSKIP(qPrintable(QStringLiteral("%1 is not installed").arg(program)));
    }
    QTemporaryDir folder;
    QRandomGenerator random(18);
    for (int round = 0; round < 60; ++round) {
        const int samples = round < 2 ? round : random.bounded(1, 300);
        // Every other window without vectors, for the reader that knows none.
        const RandomWindow window(random, samples, round % 2 ? 1 : random.bounded(2, 131));
        ExportSettings settings{
            .period = {random.bounded(1, 13), QStringList{"us", "ns", "ps"}[random.bounded(3)]},
            .buses = {}};
        settings.formulas = random.bounded(2) ? Formulas::Disarmed : Formulas::Kept;
        ExportCore core;
        core.moduleName = "top";
        core.triggerSample = random.bounded(samples + 2);
        const QString path = folder.filePath(QString::number(round));
        QVERIFY(QDir().mkpath(path));
        window.writeExpected(path + "/expected.json", settings, core.triggerSample);
        for (const auto &[format, name] :
             {std::pair(ExportFormat::CsvPlain, "csv"), std::pair(ExportFormat::VcdPlain, "vcd"),
              std::pair(ExportFormat::Fst, "fst")}) {
            settings.format = format;
            QString reason;
            QVERIFY2(
                writeExport(path + "/waves." + name, settings, core, window.contents(), &reason),
                qPrintable(reason));
        }
        QCOMPARE(run("fst2vcd", {"-f", path + "/waves.fst", "-o", path + "/again.vcd"}), QString());
    }
    QCOMPARE(run("python3", {KEO_SOURCE_DIR "/tests/export/readback.py", folder.path()}),
             QString());
}

void tst_PlainExports::names_data()
{
    const auto row =
        addColumns<QStringList, QList<int>, QStringList>({"titles", "widths", "names"});
    row("ranges", {"dut/d[7:0]", "d[0:7]", "d[3:0]", "d [1]"}, {8, 8, 8, 1},
        {"dut d [7:0]", "d [0:7]", "d_3:0_ [7:0]", "d_2 [1]"});
    row("bits share a base", {"d[0]", "d[1]", "d[1]", "d", "d_2"}, {1, 1, 1, 1, 1},
        {"d [0]", "d [1]", "d_2 [1]", "d_3", "d_2_2"});
    row("what ends a name", {"a b.c", "m[1][2]", "\\x", "$end", "//", "a//b"}, {1, 1, 1, 1, 1, 1},
        {"a_b_c", "m_1_ [2]", "_x", "_end", "unnamed", "a b"});
    row("too many scopes", {QString("s/").repeated(70) + "n"}, {1},
        {QString("s ").repeated(64) + "s_s_s_s_s_s_n"});
}

void tst_PlainExports::names()
{
    QFETCH(QStringList, titles);
    QFETCH(QList<int>, widths);
    QFETCH(QStringList, names);
    QHash<QStringList, VcdScopeNames> scopes;
    for (qsizetype i = 0; i < titles.size(); ++i) {
        VcdName name = vcdName(titles[i], widths[i]);
        scopes[name.scopes].makeUnique(name, widths[i]);
        QStringList parts = name.scopes + QStringList(name.base);
        if (!name.index.isEmpty())
            parts.append(name.index);
        QCOMPARE(parts.join(u' '), names[i]);
    }
}

// Whatever the converter does, it is told, and the file that was there stays.
void tst_PlainExports::converter_data()
{
    const auto row = addColumns<QByteArray, QString>({"script", "reason"});
    row("missing", "", "gtkwave");
    row("says why", "echo first >&2; echo no such luck >&2; exit 3", "no such luck");
    row("makes nothing", "exit 0", "no file that can be read");
    row("makes something else", "head -c 500 /dev/zero > \"$2\"", "no file that can be read");
    row("dies", "kill -9 $$", "failed");
}

void tst_PlainExports::converter()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, reason);
    QTemporaryDir folder;
    if (!script.isEmpty()) {
        QFile file(
            putFile(folder.filePath("vcd2fst"), "#!/bin/sh\nPATH=/usr/bin:/bin\n" + script + '\n'));
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder.path().toLocal8Bit());
    WindowContents contents;
    contents.addSignal({.id = 0, .name = "a", .text = "", .data = QBitArray(9)});
    const QString target = putFile(folder.filePath("old.fst"), "as it was");
    QString told;
    ExportSettings settings;
    settings.format = ExportFormat::Fst;
    const bool isWritten = writeExport(target, settings, {}, contents, &told);
    const bool isPossible = !exportObstacle(ExportFormat::Fst);
    qputenv("PATH", path);
    QVERIFY(!isWritten && isPossible == !script.isEmpty());
    QVERIFY2(told.contains(reason), qPrintable(told));
    QCOMPARE(contentOf(target), "as it was");
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), script.isEmpty() ? 1 : 2);
}

KEO_TEST_MAIN(tst_PlainExports)
#include "tst_plainexports.moc"
