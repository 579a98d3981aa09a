#include "fakeserver.h"

#include <capture/litedatamanager.h>
#include <capture/registerimage.h>
#include <capture/registerpreview.h>
#include <capture/shiftword.h>
#include <capture/standarddatamanager.h>
#include <link/jtagsession.h>

#include <support/testmain.h>

#include <QJsonObject>
#include <QRegularExpression>

#include <functional>
#include <memory>
#include <random>

using namespace KEO;

namespace {

using Random = std::function<int(int)>; // a number below

QString trimmedFront(QString text, QChar filling)
{
    while (text.size() > 1 && text[0] == filling)
        text.remove(0, 1);
    return text;
}

/// A core with any settings, and expressions of one unit or two.
std::unique_ptr<CoreConfig> randomCore(const Random &below)
{
    auto core = std::make_unique<CoreConfig>(below(16));
    core->dynamic = below(4) > 0 ? 1 : 0;
    core->signals = QList<SignalEntry>(1 + below(40), {QStringLiteral("s"), {}, {}});
    core->window_num = 1 + below(8);
    core->capture_amount = 32 << below(6);
    core->trigger_pos = below(core->capture_amount - 8);
    for (int i = 0; i < CoreConfig::kUnits; ++i) {
        MatchUnit &unit = *core->matchUnits[size_t(i)];
        TriggerPort &port = *core->triggers[size_t(i)];
        port.signals = QList<SignalEntry>(1 + below(20), {QStringLiteral("s"), {}, {}});
        unit.trigger = &port;
        unit.enabled = below(3) == 0;
        unit.func = MatchFunction(below(8));
        const QString letters =
            isEqualityFunction(unit.func) ? QStringLiteral("01XRFBN") : QStringLiteral("01");
        for (qsizetype bit = 0; bit < port.signals.size(); ++bit) {
            unit.value0 += letters[below(int(letters.size()))];
            unit.value1 += letters[below(int(letters.size()))];
        }
        unit.counter_enable = below(2) == 1;
        unit.counter = 1 + below(65536);
        unit.counter_width = 16;
        unit.countinuous = below(2) == 1;
    }
    for (int row = below(4); row > 0; --row) {
        core->expressions += QStringLiteral("M%1&!M%2").arg(below(8)).arg(8 + below(8));
        core->expressionEnabled += below(3) > 0;
    }
    return core;
}

/// What the preview has to say of a core, "register = value", from its record alone.
QStringList expectedOf(const CoreConfig &core)
{
    QList<int> inUse;
    QStringList lines = {QStringLiteral("core %1 = ").arg(core.index)};
    const auto add = [&](const QString &name, const QString &value) {
        lines += name + QStringLiteral(" = ") + value;
    };
    const qsizetype inForce =
        core.dynamic ? core.expressionEnabled.count(true) : core.expressions.size();
    add("expression count", QString::number(core.dynamic && inForce == 0 ? 1 : inForce));
    add("capture amount", QString::number(core.capture_amount));
    const int offset = core.capture_amount - core.trigger_pos - (core.dynamic ? 4 : 3);
    add("trigger offset", QString::number(offset));
    add("window count", QString::number(core.window_num));
    for (int i = 0; i < CoreConfig::kUnits; ++i) {
        const MatchUnit &unit = *core.matchUnits[size_t(i)];
        if (!unit.enabled)
            continue;
        inUse += i;
        const QString first = trimmedFront(unit.value0, u'0');
        QString text = matchFunctionText(unit.func) + u' ';
        if (isEqualityFunction(unit.func))
            text += trimmedFront(unit.value0, u'X');
        else if (isRangeFunction(unit.func))
            text += first + QStringLiteral(" to ") + trimmedFront(unit.value1, u'0');
        else
            text += first;
        if (unit.counter_enable && unit.countinuous)
            text += QStringLiteral(", matches in a row");
        add(QStringLiteral("M%1 control").arg(i), text);
        if (unit.counter_enable)
            add(QStringLiteral("M%1 counter").arg(i),
                QStringLiteral("%1 matches").arg(unit.counter));
    }
    if (!core.dynamic)
        return lines;
    if (inForce == 0)
        add("truth table 0", "1 everywhere");
    for (int row = 0, table = 0; row < core.expressions.size(); ++row) {
        if (!core.expressionEnabled[row])
            continue;
        const QStringList units = core.expressions[row].mid(1).split(QStringLiteral("&!M"));
        const qsizetype wanted = inUse.indexOf(units[0].toInt());
        const qsizetype unwanted = inUse.indexOf(units[1].toInt());
        QStringList inputs; // only told where both units have a slot
        for (int input = 0; wanted >= 0 && unwanted >= 0 && input < 1 << inUse.size(); ++input) {
            if ((input >> wanted) & 1 && !((input >> unwanted) & 1))
                inputs += QString::number(input);
        }
        add(QStringLiteral("truth table %1").arg(table++),
            inputs.isEmpty() ? QStringLiteral("any") : inputs.join(u' '));
    }
    return lines;
}

/// "3, 5-7" as "3 5 6 7".
QString allNumbers(const QString &ranges)
{
    QStringList numbers;
    for (const QString &range : ranges.split(QStringLiteral(", "))) {
        const int last = range.section(u'-', -1).toInt();
        for (int number = range.section(u'-', 0, 0).toInt(); number <= last; ++number)
            numbers += QString::number(number);
    }
    return numbers.join(u' ');
}

QBitArray randomBits(const Random &below, int size)
{
    QBitArray bits(size);
    for (int i = 0; i < size; ++i)
        bits.setBit(i, below(2) == 1);
    return bits;
}

} // namespace

class tst_RegisterPreview : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void takesWordsApart();
    void tellsRandomSetups();
    void isWhatStartSends_data();
    void isWhatStartSends();
    void keepsStrangeWords();
};

/// Whatever goes into a word comes out of it again.
void tst_RegisterPreview::takesWordsApart()
{
    using enum ShiftWordFields::Kind;
    std::mt19937 random(1);
    const Random below = [&](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 500; ++round) {
        const int core = below(16);
        const auto address = quint16(below(0x10000));
        const QBitArray data = randomBits(below, below(70));
        QCOMPARE(fieldsOf(coreSelectWord(core)), (ShiftWordFields{CoreSelect, core, 0, {}}));
        QCOMPARE(fieldsOf(writeRegisterWord(address, data)),
                 (ShiftWordFields{RegisterWrite, 0, address, data}));
        QCOMPARE(fieldsOf(readRegisterWord(address)),
                 (ShiftWordFields{RegisterSelect, 0, address, {}}));
        QCOMPARE(fieldsOf(shiftOutWord(address, 40)),
                 (ShiftWordFields{Block, 0, address, QBitArray(40)}));
    }
}

/// The preview of the words of a set-up tells the set-up.
void tst_RegisterPreview::tellsRandomSetups()
{
    std::mt19937 random(13);
    const Random below = [&](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 200; ++round) {
        const auto core = randomCore(below);
        const QList<QBitArray> words =
            buildRegisterImage(*core, {}, true) + buildExpressionImage(*core);
        const QStringList expected = expectedOf(*core);
        QStringList told;
        qsizetype counted = 0;
        for (const RegisterPreviewLine &line : previewOf(words)) {
            counted += line.words;
            if (line.target.contains(QRegularExpression("compare|mask|edge")))
                continue; // their sum stands with the control register
            QString value = line.value;
            if (line.target.startsWith(u"truth")) {
                const QString table = expected.value(told.size()).section(QStringLiteral(" = "), 1);
                value = table == u"any"              ? table
                        : value.startsWith(u"1 at ") ? allNumbers(value.mid(5))
                                                     : value;
            }
            told += line.target + QStringLiteral(" = ") + value;
        }
        QCOMPARE(told, expected);
        QCOMPARE(counted, words.size());
    }
}

void tst_RegisterPreview::isWhatStartSends_data()
{
    QTest::addColumn<bool>("isLite");
    QTest::newRow("standard") << false;
    QTest::newRow("lite") << true;
}

/// Cores of a description that are started in another order; a server takes the words down.
void tst_RegisterPreview::isWhatStartSends()
{
    QFETCH(const bool, isLite);
    std::mt19937 random(3);
    const Random below = [&](int n) { return int(random() % unsigned(n)); };
    FakeServer server;
    server.busyPolls = 1'000'000'000;
    JtagSession &session = *JtagSession::instance();
    session.connectServer({"cable", server.name()}, 1000);
    QVERIFY(session.selectCable("cable"));
    QList<QBitArray> words;
    std::unique_ptr<CaptureManager> manager;
    if (isLite) {
        auto lite = std::make_unique<KeoLiteDataManager>();
        QVERIFY(lite->startWords().isEmpty());
        auto core = std::make_unique<LiteCoreConfig>(4);
        core->signals = QList<SignalEntry>(3);
        lite->setCore(std::move(core));
        words = lite->startWords();
        lite->start(0);
        manager = std::move(lite);
    } else {
        auto standard = std::make_unique<KeoStandardDataManager>();
        CoreList cores;
        for (int i = 0; i < 3; ++i)
            cores.push_back(randomCore(below));
        standard->setCores(std::move(cores));
        words = standard->startWords({2, 1, 7});
        standard->start({2, 1});
        QMetaObject::invokeMethod(standard.get(), "checkState");
        manager = std::move(standard);
    }
    QStringList expected;
    for (const QBitArray &word : std::as_const(words))
        expected += textOf(word);
    const auto sent = [&] {
        QStringList bits;
        for (const QString &line : std::as_const(server.log)) {
            if (line.startsWith(u"WRITE") || line.startsWith(u"OP_SELECT"))
                bits += line.section(u' ', 1, 1);
        }
        return bits.first(std::min(bits.size(), expected.size()));
    };
    QTRY_COMPARE(sent(), expected);
    manager->stop();
    manager.reset();
    session.disconnectAll();
}

/// What no program of ours sends: cut words, addresses without a register, tables written twice.
void tst_RegisterPreview::keepsStrangeWords()
{
    const QBitArray one(16, true);
    const QList<RegisterPreviewLine> lines = previewOf(
        {QBitArray(), QBitArray(20), writeRegisterWord(0x0102, {}), writeRegisterWord(0x0103, {}),
         writeRegisterWord(0x0105, one), writeRegisterWord(0xAB01, {}),
         writeRegisterWord(0xAB00, {}), writeRegisterWord(0xAB11, one),
         writeRegisterWord(0xFFFF, one), readBlockWord(64, 128)});
    QStringList told;
    for (const RegisterPreviewLine &line : lines)
        told += QStringLiteral("%1=%2").arg(line.target, line.value);
    QCOMPARE(told, QStringList({"no word that a core knows=", "no word that a core knows=",
                                "M0 edge=", "M0 control=== ", "unknown register=1111111111111111",
                                "truth table 0=1 nowhere", "truth table 1=1 at 65535",
                                "unknown register=1111111111111111", "capture memory=128 rows"}));
    QCOMPARE(previewText(lines.mid(5, 1)), "write  0xAB01  truth table 0, 2 words = 1 nowhere");
    QCOMPARE(previewJson(lines.last(1)).first().toObject(),
             (QJsonObject{{"word", "rows"},
                          {"count", 1},
                          {"address", "0x0040"},
                          {"register", "capture memory"},
                          {"value", "128 rows"},
                          {"data", "0080"}}));
}

KEO_TEST_MAIN(tst_RegisterPreview)
#include "tst_registerpreview.moc"
