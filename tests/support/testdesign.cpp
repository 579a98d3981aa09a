#include "testdesign.h"

#include "files.h"
#include <QStringList>

namespace {

// A hash, so that neighbouring bits and samples have nothing in common.
bool noiseBit(int signal, qint64 sample)
{
    quint64 x = quint64(signal) * 0x9E3779B97F4A7C15u + quint64(sample) * 0xD1B54A32D192ED03u + 1;
    x ^= x >> 29;
    x *= 0xBF58476D1CE4E5B9u;
    x ^= x >> 32;
    return x & 1;
}

/// The bus `count` in a signal list.
QString bus()
{
    QString text = QStringLiteral("<Bus name=\"count[15:0]\">");
    for (int bit = 15; bit >= 0; --bit)
        text += QStringLiteral("<Signal>count[%1]</Signal>").arg(bit);
    return text + QStringLiteral("</Bus>");
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

QString TestDesign::captured() const
{
    QString list = bus();
    for (int bit = 16; bit < signalCount(); ++bit)
        list += QStringLiteral("<Signal>%1</Signal>").arg(name(bit));
    return list;
}

QString TestDesign::liteCore() const
{
    return QStringLiteral("<KoCore_Lite index=\"%1\" sample_clock=\"clk\" trig_type=\"0\" "
                          "capture_amount=\"%2\" implemention=\"%3\" "
                          "capture_init_data_enabled=\"%4\" module_name=\"top\">"
                          "<SignalList>%5</SignalList></KoCore_Lite>")
        .arg(QString::number(coreIndex), QString::number(amount), QString::number(implementation),
             QString::number(initData), captured());
}

QString TestDesign::standardCores() const
{
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
                     captured(), bus(), units.arg(pattern),
                     dynamic ? QStringLiteral("Dynamic") : QStringLiteral("Static")) +
            QStringLiteral("<Expression>%1</Expression></Expressions></KoCore>")
                .arg(dynamic ? QStringLiteral("M0&amp;M1") : QStringLiteral("match[0]"));
    }
    return coreTexts;
}

void TestDesign::write(const QString &directory) const
{
    putFile(directory + QStringLiteral("/design.") + extension,
            QStringLiteral("<?xml version=\"1.0\"?><KEO_CONFIG><Version>3.0</Version>"
                           "<Mode>%1</Mode>%2<KEO_ID>1</KEO_ID></KEO_CONFIG>")
                .arg(lite ? QStringLiteral("Lite") : QStringLiteral("Standard"),
                     lite ? liteCore() : standardCores())
                .toUtf8());

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
    putFile(directory + QStringLiteral("/design.vcd"), vcd.join(u'\n').toUtf8());

    // The board: this design on the first cable, nothing on the others.
    putFile(
        directory + QStringLiteral("/board.json"),
        QStringLiteral(R"({ %5
  "samples_per_second": %6,
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
                 logs ? QStringLiteral("\"log\": \"packets.log\",") : QString(),
                 QString::number(samplesPerSecond))
            .toUtf8());
}
