// A set-up that was carried to a rebuilt design triggers where it did before, on simulated cores.

#include <capture/registerimage.h>
#include <capture/shiftword.h>
#include <config/rebuiltdesign.h>
#include <config/settingscarry.h>
#include <config/standardconfig.h>

#include <support/bittext.h>
#include <support/testmain.h>

#include <coremodel.h>
#include <description.h>

using namespace KEO;

class tst_CarriedTrigger : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void sameSample();
};

namespace {

constexpr int kPairs = 200;
constexpr int kStimulus = 599;           // samples
constexpr int kPatience = 6 * kStimulus; // samples until a core counts as silent

/// A number that has nothing in common with its neighbors; the same in every run.
quint32 mixed(quint32 number)
{
    number = (number ^ 0x9E3779B9u) * 0x85EBCA6Bu;
    number = (number ^ (number >> 13)) * 0xC2B2AE35u;
    return number ^ (number >> 16);
}

/// Level of a net, whichever design looks at it. Some change often, some seldom.
bool level(const QString &net, int sample)
{
    quint32 number = 0;
    for (const QChar letter : net)
        number = mixed(number + letter.unicode());
    const int period = 1 << (number % 6);
    return mixed(number + quint32(sample / period)) % 3 == 0;
}

Sim::BitMatrix stimulusOf(const QStringList &nets)
{
    Sim::BitMatrix rows{int(nets.size())};
    for (int sample = 0; sample < kStimulus; ++sample) {
        rows.appendRow();
        for (int column = 0; column < nets.size(); ++column) {
            if (level(nets[column], sample))
                rows.setInLastRow(column);
        }
    }
    return rows;
}

/// Samples that the core of \a design takes until its capture with \a setUp is complete; -1 for
/// one that does not trigger. With the windows, amount and position that tells the triggers.
int samplesToTheEnd(const CoreList &design, const CoreConfig &setUp)
{
    const auto built =
        Sim::readDescription(saveStandardConfig(design).toLatin1(), QStringLiteral("d.keo"));
    if (!built)
        qFatal("no such core can be built");
    const Sim::CoreDescription &core = built->cores.first();
    Sim::CoreStimulus stimulus;
    stimulus.captured = stimulusOf(core.captured);
    for (size_t port = 0; port < core.ports.size(); ++port)
        stimulus.ports[port] = stimulusOf(core.ports[port]);
    QStringList reports;
    Sim::CoreModel model(core, stimulus, false,
                         [&reports](const QString &text) { reports.append(text); });
    QList<QBitArray> words = buildRegisterImage(setUp, {}, false).mid(1); // without the select
    words += buildExpressionImage(setUp);
    QBitArray arm(setUp.requiredRegisterWidth());
    arm.setBit(arm.size() - 1);
    words.append(writeRegisterWord(0, arm));
    for (const QBitArray &word : std::as_const(words))
        model.shiftIn(Sim::parseShiftWord(word));
    if (!reports.isEmpty())
        qFatal("the core does not understand: %s", qPrintable(reports.first()));
    for (int samples = 0; samples < kPatience; ++samples) {
        if (!model.isArmed())
            return samples;
        model.advance(1);
    }
    return -1;
}

/// A set-up that waits a while, if it can: most bits are left open.
void setUp(CoreConfig &core, QRandomGenerator &random)
{
    core.window_num = 1 + random.bounded(2);
    core.capture_amount = 32;
    core.trigger_pos = random.bounded(20);
    core.ensureExpressionFlags();
    for (MatchUnit *unit : core.enabledUnits()) {
        if (!unit->isInUse())
            continue;
        setRandomly(*unit, random);
        for (QChar &bit : unit->value0) {
            if (isEqualityFunction(unit->func) && random.bounded(3))
                bit = u'X';
        }
    }
    for (int row = 0; row < core.expressions.size() && core.dynamic; ++row) {
        core.expressions[row] = rebuilt::randomExpression(core, random);
        core.expressionEnabled[row] = row == 0 || random.bounded(3) == 0;
    }
}

} // namespace

void tst_CarriedTrigger::sameSample()
{
    int triggered = 0;
    int missed = 0; // by the new design as it was loaded
    for (int seed = 0; seed < kPairs; ++seed) {
        QRandomGenerator random(seed);
        const CoreList before = rebuilt::randomDesign(random, 1);
        const CoreList user = rebuilt::copyOf(before);
        setUp(*user[0], random);
        const CoreList after = rebuilt::copyOf(before);
        rebuilt::permute(*after[0], *user[0], random);
        const CoreList now = rebuilt::copyOf(after);
        carrySettings(user, now);
        const int expected = samplesToTheEnd(before, *user[0]);
        QVERIFY2(samplesToTheEnd(after, *now[0]) == expected,
                 qPrintable(QStringLiteral("seed %1").arg(seed)));
        triggered += expected >= 0 ? 1 : 0;
        if (expected >= 0 && samplesToTheEnd(after, *after[0]) != expected)
            ++missed;
    }
    qInfo("%d of %d pairs trigger, %d not as loaded", triggered, kPairs, missed);
    QVERIFY(triggered > kPairs / 2);
    QVERIFY(missed > triggered / 2);
}

KEO_TEST_MAIN(tst_CarriedTrigger)
#include "tst_carriedtrigger.moc"
