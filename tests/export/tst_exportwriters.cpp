#include <export/csvwriter.h>
#include <export/plaincsvwriter.h>
#include <export/plainvcdwriter.h>
#include <export/prnwriter.h>
#include <export/vcdwriter.h>
#include <support/files.h>
#include <support/testmain.h>
#include <wave_data/windowcontents.h>

#include <QBuffer>
#include <QDomDocument>
#include <QRandomGenerator>

#include <deque>
#include <functional>

using namespace KEO;
using WaveMonitor::BusElement;
using WaveMonitor::DataFormat;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

using Write = std::function<bool(QIODevice &, const ExportWindow &)>;

const QDateTime kWritten(QDate(2003, 2, 1), QTime(14, 5, 6));

QByteArray written(const Write &write, const ExportWindow &window)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return write(buffer, window) ? buffer.data() : QByteArray("failed");
}

/// A table cell by cell, as slow and simple as it can be.
QByteArray naiveRows(const ExportColumns &columns, const QByteArray &separator,
                     const QByteArray &lineEnd, qint64 time, qint64 period)
{
    QByteArray text;
    for (int i = 0; i < columns.front()->size(); ++i, time += period) {
        text += QByteArray::number(time);
        for (const auto &column : columns)
            text += separator + column->value(i).toUtf8();
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
    // What no file can hold: gone in a saved window, so the other door has to drop it as well.
    const auto unstorable = [&] {
        return random.bounded(9) ? QString() : QStringLiteral("\ufffe") + QChar(1);
    };
    const auto signal = [&] {
        const int length = random.bounded(4) ? samples : random.bounded(samples + 10);
        return SignalElement{.id = id++,
                             .name = QString(random.bounded(30), u'n') + unstorable(),
                             .text = random.bounded(2) ? QString() : QStringLiteral("text"),
                             .data = randomBits(random, length)};
    };
    const int rows = random.bounded(1, 12);
    for (int row = 0; row < rows; ++row) {
        for (int i = random.bounded(80); i > 0; --i)
            contents.addSignal(signal());
        std::deque<SignalElement> members;
        BusElement bus{.name = QString(random.bounded(9000), u'b') + unstorable(),
                       .text = unstorable(),
                       .signals = {}};
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
    void identifiers();
    void sameAsCellByCell();
    void refusedBytes_data();
    void refusedBytes();

private:
    void addWriters();
};

void tst_ExportWriters::addWriters()
{
    const auto row = addColumns<QString, Write>({"expected", "write"});
    row("csv", "all.csv", [](auto &out, auto &w) { return writeCsv(out, "us", 9999999, w); });
    row("prn of everything", "all.prn",
        [](auto &out, auto &w) { return writePrn(out, "ns", 7, w, 0); });
    row("prn without members", "shown.prn",
        [](auto &out, auto &w) { return writePrn(out, "ps", 1, w, 1); });
    row("prn of buses, one of them missing", "buses.prn", [](auto &out, auto &w) {
        return writePrnBuses(out, "ns", 7, w, {1, 5, 7, 8});
    });
    row("vcd, inverted clock", "falling.vcd", [](auto &out, auto &w) {
        return writeVcd(out, "dut", "clk net", true, "ps", 5, 2, w, kWritten);
    });
    row("vcd, trigger at sample 0, period 1", "rising.vcd", [](auto &out, auto &w) {
        return writeVcd(out, "top", "clk", false, "ps", 1, 0, w, kWritten);
    });
    row("plain csv", "all.plain.csv",
        [](auto &out, auto &w) { return writePlainCsv(out, "ns", 10, 2, Formulas::Disarmed, w); });
    row("plain vcd", "all.plain.vcd", [](auto &out, auto &w) {
        return writePlainVcd(out, {"top module", 20'000, 2, kWritten}, w);
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
    const QString folder = QStringLiteral(KEO_SOURCE_DIR "/tests/export/expected/");
    QDomDocument document;
    QVERIFY(document.setContent(contentOf(folder + "window.xml")));
    const QDomElement element = document.documentElement().firstChildElement("Window");
    WindowContents contents;
    QVERIFY(contents.readWindow(element));

    const QByteArray bytes = contentOf(folder + expected);
    QCOMPARE(written(write, element), bytes);
    QCOMPARE(written(write, contents), bytes);
}

void tst_ExportWriters::emptyWindow()
{
    const auto csv = [](auto &out, auto &w) { return writeCsv(out, "ns", 10, w); };
    const auto prn = [](auto &out, auto &w) { return writePrn(out, "ns", 10, w, 2); };
    const auto vcd = [](auto &out, auto &w) {
        return writeVcd(out, "dut", "clk", false, "ps", 10, 0, w, kWritten);
    };
    WindowContents contents;
    QVERIFY(
        written(vcd, contents).endsWith("$enddefinitions\n$end\n#0\n$dumpvars\n0!\n$end\n#10\n"));
    for (const bool hasSignals :
         {false, true}) { // without rows: no column for a default row either
        QCOMPARE(written(csv, contents), "Data:\ntime unit: ns,\n0,\n");
        QCOMPARE(written(prn, contents), "time unit: ns\t");
        if (!hasSignals)
            contents.addSignal({.id = 0, .name = "a", .text = "", .data = QBitArray(3)});
        contents.clearLayout();
    }
}

void tst_ExportWriters::identifiers()
{
    const QList<QPair<int, QString>> identifiers{{1, "\""},   {93, "~"},    {94, "\"!"},
                                                 {188, "#!"}, {8835, "~~"}, {8836, "\x7f!"}};
    for (const auto &[number, identifier] : identifiers)
        QCOMPARE(vcdIdentifier(number), identifier);
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

void tst_ExportWriters::refusedBytes_data()
{
    addWriters();
}

void tst_ExportWriters::refusedBytes()
{
    QFETCH(Write, write);
    WindowContents contents;
    QBitArray clock(30'000);
    for (int i = 0; i < clock.size(); i += 2)
        clock.setBit(i);
    for (int i = 0; i < 3; ++i) {
        SignalElement member{.id = i, .name = "a", .text = "", .data = clock};
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
}

KEO_TEST_MAIN(tst_ExportWriters)
#include "tst_exportwriters.moc"
