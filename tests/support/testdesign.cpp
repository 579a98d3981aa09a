#include "testdesign.h"

#include <QFile>
#include <QStringList>

namespace {

void writeFile(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

// A hash, so that neighbouring bits and samples have nothing in common.
bool noiseBit(int signal, qint64 sample)
{
    quint64 x = quint64(signal) * 0x9E3779B97F4A7C15u + quint64(sample) * 0xD1B54A32D192ED03u + 1;
    x ^= x >> 29;
    x *= 0xBF58476D1CE4E5B9u;
    x ^= x >> 32;
    return x & 1;
}

} // namespace

QString TestDesign::name(int signal) const
{
    return signal < 16 ? QStringLiteral("count[%1]").arg(15 - signal)
                       : QStringLiteral("noise_%1").arg(signal - 16);
}

bool TestDesign::level(int signal, qint64 sample) const
{
    const qint64 wrapped = sample % kLength;
    return signal < 16 ? (wrapped >> (15 - signal)) & 1 : noiseBit(signal, wrapped);
}

bool TestDesign::isTrigger(qint64 sample) const
{
    const qint64 count = sample % kLength;
    return fires && (count & 0xFF) == 0x37 && (!dynamic || (count >= 0x100 && count <= 0xEFF));
}

qint64 TestDesign::firstTrigger(qint64 from) const
{
    while (!isTrigger(from))
        ++from;
    return from;
}

void TestDesign::write(const QString &directory) const
{
    // The description.
    QString bus = QStringLiteral("<Bus name=\"count[15:0]\">");
    for (int bit = 0; bit < 16; ++bit)
        bus += QStringLiteral("<Signal>%1</Signal>").arg(name(bit));
    bus += QStringLiteral("</Bus>");
    QString captured = bus;
    for (int bit = 16; bit < signalCount(); ++bit)
        captured += QStringLiteral("<Signal>%1</Signal>").arg(name(bit));
    const QString pattern =
        fires ? QStringLiteral("XXXXXXXX00110111") : QStringLiteral("11111111XXXXXXXX");
    const QString units = QStringLiteral(
        "<MatchUnit index=\"0\" enabled=\"1\" match_type=\"0\" func=\"0\" value0=\"%1\" "
        "trigger=\"2\"/><MatchUnit index=\"1\" enabled=\"1\" match_type=\"4\" func=\"6\" "
        "value0=\"0000000100000000\" value1=\"0000111011111111\" trigger=\"2\"/>");
    QString coreTexts;
    for (int core = 0; core < cores; ++core) {
        coreTexts +=
            QStringLiteral("<KoCore index=\"%1\" sample_clock=\"clk\" trig_type=\"0\" "
                           "storage_depth=\"%2\" window_num=\"%3\" capture_amount=\"%4\" "
                           "trigger_pos=\"%5\" module_name=\"top\"><SignalList>%6</SignalList>"
                           "<Triggers><Trigger index=\"2\"><SignalList>%7</SignalList></Trigger>"
                           "</Triggers><MatchUnits>%8</MatchUnits><Expressions type=\"%9\">")
                .arg(QString::number(coreIndex + core), QString::number(storageDepth),
                     QString::number(windows), QString::number(amount), QString::number(position),
                     captured, bus, units.arg(pattern),
                     dynamic ? QStringLiteral("Dynamic") : QStringLiteral("Static")) +
            QStringLiteral("<Expression>%1</Expression></Expressions></KoCore>")
                .arg(dynamic ? QStringLiteral("M0&amp;M1") : QStringLiteral("match[0]"));
    }
    writeFile(directory + QStringLiteral("/design.") + extension,
              QStringLiteral("<?xml version=\"1.0\"?><KEO_CONFIG><Version>3.0</Version>"
                             "<Mode>Standard</Mode>%1<KEO_ID>1</KEO_ID></KEO_CONFIG>")
                  .arg(coreTexts));

    // The stimulus: values change at 10 i, the clock rises at 10 i + 5.
    QStringList vcd{QStringLiteral("$timescale 1ns $end\n$scope module top $end\n"
                                   "$var wire 1 ! clk $end\n$var wire 16 \" count [15:0] $end")};
    for (int bit = 16; bit < signalCount(); ++bit)
        vcd.append(QStringLiteral("$var wire 1 n%1 %2 $end").arg(QString::number(bit), name(bit)));
    vcd.append(QStringLiteral("$upscope $end\n$enddefinitions $end"));
    for (int sample = 0; sample < kLength; ++sample) {
        vcd.append(QStringLiteral("#%1\n0!\nb%2 \"")
                       .arg(QString::number(10 * sample), QString::number(sample, 2)));
        for (int bit = 16; bit < signalCount(); ++bit) {
            if (sample == 0 || level(bit, sample) != level(bit, sample - 1))
                vcd.append(QStringLiteral("%1n%2").arg(int(level(bit, sample))).arg(bit));
        }
        vcd.append(QStringLiteral("#%1\n1!").arg(10 * sample + 5));
    }
    vcd.append(QString());
    writeFile(directory + QStringLiteral("/design.vcd"), vcd.join(u'\n'));

    // The board: this design on the first cable, nothing on the others.
    writeFile(
        directory + QStringLiteral("/board.json"),
        QStringLiteral(R"({ %5
  "cables": {
    "keo1": {
      "chain": [
        { "model": "%1", "idcode": "0x1100381B", "description": "design.%2",
          "stimulus": "design.vcd", "programmed": %3 }
      ]%4
    }
  }
})")
            .arg(device, extension, programmed ? QStringLiteral("true") : QStringLiteral("false"),
                 faults.isEmpty() ? QString() : QStringLiteral(",\n      \"faults\": ") + faults,
                 logs ? QStringLiteral("\"log\": \"packets.log\",") : QString()));
}
