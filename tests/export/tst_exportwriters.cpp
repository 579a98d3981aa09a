#include <export/csvwriter.h>
#include <export/prnwriter.h>
#include <export/vcdwriter.h>
#include <support/testmain.h>
#include <wave/windowcontents.h>

#include <QBuffer>
#include <QDomDocument>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <deque>
#include <functional>

using namespace KEO;
using WaveMonitor::BusElement;
using WaveMonitor::DataFormat;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

using Write = std::function<bool(QIODevice &, const ExportWindow &)>;
using WriteFile = std::function<bool(const QString &, const ExportWindow &)>;

const QDateTime kWritten(QDate(2003, 2, 1), QTime(14, 5, 6));

QByteArray written(const Write &write, const ExportWindow &window)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return write(buffer, window) ? buffer.data() : QByteArray("failed");
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

/// The date in the head of a VCD is the only thing that differs from run to run.
QByteArray undated(QByteArray vcd)
{
    const qsizetype begin = vcd.indexOf("$date\n  ") + 8;
    return begin < 8 ? vcd : vcd.replace(begin, 19, "date");
}

QByteArray cell(const QString &text)
{
    return text.toUtf8();
}

/// A table cell by cell, as slow and simple as it can be.
QByteArray naiveRows(const ExportColumns &columns, const QByteArray &separator,
                     const QByteArray &lineEnd, qint64 time, qint64 period)
{
    QByteArray text;
    for (int i = 0; i < columns.front()->size(); ++i, time += period) {
        text += QByteArray::number(time);
        for (const auto &column : columns)
            text += separator + cell(column->value(i));
        text += lineEnd;
    }
    return text;
}

/// The value changes of a VCD, from the first sample on.
QByteArray naiveChanges(const QList<ExportRecord> &records, qint64 period, qsizetype trigger)
{
    QByteArray text;
    const qsizetype samples = records.first().data.size();
    const auto stamp = [&](qint64 time) { text += '#' + QByteArray::number(time) + '\n'; };
    for (qsizetype i = 0; i < samples; ++i) {
        stamp(qint64((double(i) + 0.5) * double(period)));
        if (i == 0)
            text += "$comment Sample 0 (Start) $end\n";
        if (i == samples - 1)
            text += "$comment Sample " + QByteArray::number(samples) + " (End) $end\n";
        if (i == trigger)
            text += "$comment Sample " + QByteArray::number(trigger) + " (Trigger) $end\n";
        text += "1!\n";
        for (qsizetype j = 0; j < records.size(); ++j) {
            const QBitArray &data = records[j].data;
            if (j >= data.size() || i >= data.size())
                continue;
            if (i == 0 || data.testBit(i) != data.testBit(i - 1))
                text += (data.testBit(i) ? '1' : '0') + records[j].id.toUtf8() + '\n';
        }
        stamp((i + 1) * period);
        text += "0!\n\n";
    }
    stamp((samples + 1) * period);
    return text;
}

QBitArray randomBits(QRandomGenerator &random, int samples)
{
    QBitArray bits(samples);
    const int oneIn = random.bounded(2, 20);
    for (int i = 0; i < samples; ++i)
        bits.setBit(i, i > 0 && random.bounded(oneIn) ? bits.testBit(i - 1) : random.bounded(2));
    return bits;
}

/// Signals and buses of any width and format, some of them shorter than the others.
void fillRandomly(WindowContents &contents, QRandomGenerator &random)
{
    const int samples = random.bounded(300);
    int id = 0;
    const auto signal = [&] {
        const int length = random.bounded(4) ? samples : random.bounded(samples + 10);
        return SignalElement{.id = id++,
                             .name = QString(random.bounded(30), u'n'),
                             .text = random.bounded(2) ? QString() : QStringLiteral("text"),
                             .data = randomBits(random, length)};
    };
    const int rows = random.bounded(1, 12);
    for (int row = 0; row < rows; ++row) {
        for (int i = random.bounded(80); i > 0; --i)
            contents.addSignal(signal());
        std::deque<SignalElement> members;
        BusElement bus{.name = QString(random.bounded(9000), u'b'), .text = {}, .signals = {}};
        for (int i = random.bounded(3) ? random.bounded(6) : random.bounded(140); i > 0; --i)
            bus.signals.append(&members.emplace_back(signal()));
        contents.addBus(bus).format->setType(DataFormat::Type(random.bounded(6)));
    }
}

class FullDevice final : public QIODevice
{
public:
    explicit FullDevice(qint64 room) : m_room(room)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        const qint64 taken = std::min(size, m_room);
        m_room -= taken;
        return taken;
    }

private:
    qint64 m_room;
};

} // namespace

class tst_ExportWriters : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void expectedFiles_data();
    void expectedFiles();
    void emptyWindow();
    void busNames();
    void identifiers();
    void moreSignalsThanSamples();
    void sameAsCellByCell();
    void bothDoorsDropTheSameCharacters();
    void refusedBytes_data();
    void refusedBytes();

private:
    void addWriters();
};

void tst_ExportWriters::addWriters()
{
    QTest::addColumn<QString>("expected");
    QTest::addColumn<Write>("write");
    QTest::addColumn<WriteFile>("writeFile");
    QTest::newRow("csv") << "all.csv" << Write([](auto &out, auto &w) {
        return writeCsv(out, "us", 9999999, w);
    }) << WriteFile([](auto &out, auto &w) { return writeCsv(out, "us", 9999999, w); });
    QTest::newRow("prn of everything")
        << "all.prn" << Write([](auto &out, auto &w) { return writePrn(out, "ns", 7, w, 0); })
        << WriteFile([](auto &out, auto &w) { return writePrn(out, "ns", 7, w, 0); });
    QTest::newRow("prn without members")
        << "shown.prn" << Write([](auto &out, auto &w) { return writePrn(out, "ps", 1, w, 1); })
        << WriteFile([](auto &out, auto &w) { return writePrn(out, "ps", 1, w, 1); });
    // The last ordinal is one that no bus has.
    QTest::newRow("prn of buses") << "buses.prn" << Write([](auto &out, auto &w) {
        return writePrnBuses(out, "ns", 7, w, {1, 5, 7, 8});
    }) << WriteFile([](auto &out, auto &w) {
        return writePrnBuses(out, "ns", 7, w, {1, 5, 7, 8});
    });
    QTest::newRow("vcd, inverted clock") << "falling.vcd" << Write([](auto &out, auto &w) {
        return writeVcd(out, "dut", "clk net", true, "ps", 5, 2, w, kWritten);
    }) << WriteFile([](auto &out, auto &w) {
        return writeVcd(out, "dut", "clk net", true, "ps", 5, 2, w);
    });
    QTest::newRow("vcd, trigger at sample 0, period 1")
        << "rising.vcd" << Write([](auto &out, auto &w) {
               return writeVcd(out, "top", "clk", false, "ps", 1, 0, w, kWritten);
           })
        << WriteFile([](auto &out, auto &w) {
               return writeVcd(out, "top", "clk", false, "ps", 1, 0, w);
           });
}

void tst_ExportWriters::expectedFiles_data()
{
    addWriters();
}

void tst_ExportWriters::expectedFiles()
{
    QFETCH(QString, expected);
    QFETCH(Write, write);
    QFETCH(WriteFile, writeFile);
    const QString folder = QStringLiteral(KEO_SOURCE_DIR "/tests/export/expected/");
    QDomDocument document;
    QVERIFY(document.setContent(contentOf(folder + "window.xml")));
    const QDomElement element = document.documentElement().firstChildElement("Window");
    WindowContents contents;
    QVERIFY(contents.readWindow(element));

    const QByteArray bytes = contentOf(folder + expected);
    QCOMPARE(written(write, element), bytes);
    QCOMPARE(written(write, contents), bytes);
    QTemporaryDir target;
    const QString path = target.filePath(expected);
    QFile before(path);
    QVERIFY(before.open(QIODevice::WriteOnly) && before.write(QByteArray(100'000, 'x')) > 0);
    before.close();
    QVERIFY(writeFile(path, contents));
    QCOMPARE(undated(contentOf(path)), undated(bytes));
}

void tst_ExportWriters::emptyWindow()
{
    const WindowContents empty;
    const auto csv = [](auto &out, auto &w) { return writeCsv(out, "ns", 10, w); };
    QCOMPARE(written(csv, empty), "Data:\ntime unit: ns,\n0,\n");
    const auto prn = [](auto &out, auto &w) { return writePrn(out, "ns", 10, w, 0); };
    QCOMPARE(written(prn, empty), "time unit: ns\t");
    const auto vcd = [](auto &out, auto &w) {
        return writeVcd(out, "dut", "clk", false, "ps", 10, 0, w, kWritten);
    };
    QVERIFY(written(vcd, empty).endsWith("$enddefinitions\n$end\n#0\n$dumpvars\n0!\n$end\n#10\n"));

    WindowContents contents; // signals, but no rows: no column for a default row either
    contents.addSignal({.id = 0, .name = "a", .text = "", .data = QBitArray(3)});
    contents.clearLayout();
    QCOMPARE(written(csv, contents), "Data:\ntime unit: ns,\n0,\n");
    const auto other = [](auto &out, auto &w) { return writePrn(out, "ns", 10, w, 2); };
    contents.addSignal({.id = 0, .name = "a", .text = "", .data = QBitArray(3)});
    QCOMPARE(written(other, contents), "time unit: ns\t");
}

void tst_ExportWriters::busNames()
{
    WindowContents contents;
    contents.addSignal({.id = 0, .name = "a", .text = "", .data = {}});
    contents.addBus({.name = "bus", .text = "", .signals = {}});
    contents.addBus({.name = "other", .text = "renamed", .signals = {}});
    QCOMPARE(readBusNames(contents), (QStringList{"bus", "renamed"}));
}

void tst_ExportWriters::identifiers()
{
    QCOMPARE(vcdIdentifier(1), "\"");
    QCOMPARE(vcdIdentifier(93), "~");
    QCOMPARE(vcdIdentifier(94), "\"!");
    QCOMPARE(vcdIdentifier(188), "#!");
    QCOMPARE(vcdIdentifier(8835), "~~");
    QCOMPARE(vcdIdentifier(8836), "\x7f!");
}

void tst_ExportWriters::moreSignalsThanSamples()
{
    WindowContents contents;
    QBitArray samples(95);
    samples.setBit(94);
    for (int i = 0; i < 200; ++i)
        contents.addSignal(
            {.id = i, .name = QStringLiteral("net%1").arg(i), .text = "", .data = samples});
    const QByteArray vcd = written(
        [](auto &out, auto &w) {
            return writeVcd(out, "dut", "clk", false, "ps", 2, -1, w, kWritten);
        },
        contents);
    QVERIFY(vcd.contains("$var\nreg 1 \"! net93\n$end\n"));
    // Signals 0 to 94 are dumped at the first and at the last sample, all others stay unknown.
    QCOMPARE(vcd.count("\n0\"!\n") + vcd.count("\n1\"!\n"), 2);   // net93
    QCOMPARE(vcd.count("\n0\"\"\n") + vcd.count("\n1\"\"\n"), 2); // net94
    QVERIFY(vcd.contains("\nX\"#\n") && !vcd.contains("\n0\"#\n") && !vcd.contains("\n1\"#\n"));
}

void tst_ExportWriters::sameAsCellByCell()
{
    QRandomGenerator random(11);
    for (int round = 0; round < 60; ++round) {
        WindowContents contents;
        fillRandomly(contents, random);
        QDomDocument document;
        const QDomElement element = contents.writeWindow(document);
        const int period = random.bounded(1, 9'999'999);
        const ExportColumns columns = readExportColumns(contents, /*includeMembers=*/true);

        const auto csv = [=](auto &out, auto &w) { return writeCsv(out, "ns", period, w); };
        const QByteArray table = written(csv, contents);
        QVERIFY(table.endsWith(", X,\n" + naiveRows(columns, ", ", ",\n", period, period)));
        QVERIFY(written(csv, element) == table);

        const auto prn = [=](auto &out, auto &w) { return writePrn(out, "ns", period, w, 0); };
        QVERIFY(written(prn, element).endsWith('\n' + naiveRows(columns, "\t", " \n", 0, period)));

        const QList<ExportRecord> records = readVcdRecords(contents);
        if (records.isEmpty())
            continue;
        const qint64 picoseconds = qint64(period) * (random.bounded(2) ? 1 : 1'000'000);
        const int trigger = random.bounded(300);
        const auto vcd = [=](auto &out, auto &w) {
            return writeVcd(out, "dut", "clk", false, "ps", picoseconds, trigger, w, kWritten);
        };
        const QByteArray dump = written(vcd, element);
        QVERIFY(dump.endsWith("$end\n" + naiveChanges(records, picoseconds, trigger)));
        QVERIFY(written(vcd, contents) == dump);
    }
}

void tst_ExportWriters::bothDoorsDropTheSameCharacters()
{
    WindowContents contents;
    SignalElement member{.id = 0, .name = "a\x01", .text = "\x02", .data = QBitArray(2)};
    contents.addBus({.name = "b\x03", .text = "\x04", .signals = {&member}});
    QDomDocument document;
    const QDomElement element = contents.writeWindow(document);
    const auto csv = [](auto &out, auto &w) { return writeCsv(out, "ns", 1, w); };
    QVERIFY(
        written(csv, contents).startsWith("Groups:\nb =, a, ,\n\nData:\ntime unit: ns, b, a,\n"));
    QCOMPARE(written(csv, element), written(csv, contents));
}

void tst_ExportWriters::refusedBytes_data()
{
    addWriters();
}

void tst_ExportWriters::refusedBytes()
{
    QFETCH(Write, write);
    QFETCH(WriteFile, writeFile);
    WindowContents contents;
    for (int i = 0; i < 3; ++i) {
        SignalElement member{.id = i, .name = "a", .text = "", .data = QBitArray(30'000, i & 1)};
        contents.addBus({.name = "b", .text = "", .signals = {&member}});
    }
    // The first block, the last one, and only the last byte of all.
    const qint64 size = written(write, contents).size();
    QVERIFY(size > 128 * 1024);
    for (const qint64 room : {qint64(0), qint64(130 * 1024), size - 1}) {
        FullDevice device(room);
        QVERIFY(!write(device, contents));
    }
    FullDevice fits(size);
    QVERIFY(write(fits, contents));

    QTemporaryDir target;
    QVERIFY(!writeFile(target.filePath("missing/file"), contents));
    QVERIFY(!writeFile(target.path(), contents)); // a folder
    if (QFile::exists("/dev/full"))
        QVERIFY(!writeFile("/dev/full", contents));
}

KEO_TEST_MAIN(tst_ExportWriters)
#include "tst_exportwriters.moc"
