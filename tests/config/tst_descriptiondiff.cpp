// What differs between two core descriptions.

#include <config/descriptiondiff.h>
#include <config/liteconfig.h>
#include <config/matchtype.h>
#include <config/standardconfig.h>

#include <support/testmain.h>

#include <QRandomGenerator>

#include <algorithm>
#include <functional>
#include <set>
#include <utility>

using namespace KEO;

using Subject = DescriptionChange::Subject;
using Action = DescriptionChange::Action;
using Origin = DescriptionChange::Origin;
using Changes = QList<DescriptionChange>;

class tst_DescriptionDiff : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void oneRandomChange();
    void summaries();
    void refused();
};

namespace {

/// The bytes of a file that holds \a description.
QByteArray bytesOf(const LoadedDescription &description)
{
    QByteArray bytes = description.kind == DescriptionKind::Lite
                           ? saveLiteConfig(description.lite)
                           : saveStandardConfig(description.standard).toLatin1();
    bytes.replace("<Version>3.0<", "<Version>" + description.version.toLatin1() + '<');
    const QByteArray id = "<KEO_ID>" + description.id.toLatin1() + "</KEO_ID>";
    return bytes.replace("</Mode>", "</Mode>" + (description.id.isEmpty() ? QByteArray() : id));
}

LoadedDescription load(const QByteArray &bytes)
{
    Result<LoadedDescription> loaded = loadDescription(bytes);
    if (!loaded)
        qFatal("%s", qPrintable(loaded.error().message));
    return std::move(*loaded);
}

/// Makes descriptions, and one change to each, with names that are never used twice.
class Maker final
{
public:
    explicit Maker(quint32 seed) : m_random(seed) {}

    LoadedDescription description()
    {
        LoadedDescription made;
        made.version = "3.0";
        made.id = fresh();
        const int cores = below(3) + 1;
        if (below(3) == 0) {
            made.kind = DescriptionKind::Lite;
            for (int i = 0; i < cores; ++i)
                made.lite += liteCore(i);
            return made;
        }
        for (int i = 0; i < cores; ++i)
            made.standard.push_back(core(i));
        return made;
    }

    /// Changes one thing and says what, or nothing if there is no such thing.
    Changes change(LoadedDescription &description)
    {
        if (below(8) == 0)
            return changeWhole(description);
        DescriptionChange change;
        bool isChanged = false;
        if (description.kind == DescriptionKind::Lite) {
            LiteCoreConfig &core = description.lite[below(int(description.lite.size()))];
            change.core = core.index;
            isChanged =
                below(2) == 0 ? changeSignals(core.signals, change) : changeLite(core, change);
        } else {
            CoreConfig &core = *description.standard[below(int(description.standard.size()))];
            change.core = core.index;
            switch (below(5)) {
            case 0:
                isChanged = changeSignals(core.signals, change);
                break;
            case 1:
                change.port = below(3);
                isChanged = changeSignals(core.triggers[change.port]->signals, change);
                break;
            case 2:
                change.unit = below(CoreConfig::kUnits);
                isChanged = changeUnit(*core.matchUnits[change.unit], change);
                break;
            case 3:
                isChanged = changeExpressions(core, change);
                break;
            default:
                isChanged = changeCore(core, change);
            }
        }
        return isChanged ? Changes{change} : Changes();
    }

private:
    int below(int bound) { return int(m_random.bounded(bound)); }
    QString fresh() { return QString("n%1").arg(++m_names); }

    SignalEntry bus()
    {
        SignalEntry made{fresh(), below(4) ? QString() : fresh(), {}};
        for (int i = below(5); i >= 0; --i)
            made.members += SignalEntry{fresh(), below(4) ? QString() : fresh(), {}};
        return made;
    }
    /// Single signals without a shown name may have a twin: which of two has gone can't be told.
    QList<SignalEntry> signalList()
    {
        QList<SignalEntry> list;
        const QStringList twins{fresh(), fresh()};
        for (int i = below(9); i > 0; --i) {
            const int kind = below(4);
            if (kind == 0)
                list += bus();
            else if (kind == 1)
                list += SignalEntry{twins[below(2)], {}, {}};
            else
                list += SignalEntry{fresh(), below(4) ? QString() : fresh(), {}};
        }
        return list;
    }
    LiteCoreConfig liteCore(int number)
    {
        LiteCoreConfig made(number);
        made.sample_clock = fresh();
        made.trig_type = below(2);
        made.capture_amount = 1 << below(12);
        made.signals = signalList();
        return made;
    }
    std::unique_ptr<CoreConfig> core(int number)
    {
        auto made = std::make_unique<CoreConfig>(number);
        made->sample_clock = fresh();
        made->module_name = fresh();
        made->dynamic = below(2);
        made->storage_depth = 1 << below(12);
        made->signals = signalList();
        for (int port = 0; port < 3; ++port)
            made->triggers[port]->signals = signalList();
        for (const auto &unit : made->matchUnits) {
            unit->enabled = below(2);
            unit->match_type = MatchType(below(8)); // some without a name
            unit->func = MatchFunction(below(8));
            unit->value0 = fresh();
            unit->trigger = below(3) ? made->triggers[below(3)].get() : nullptr;
        }
        for (int i = below(5); i > 0; --i)
            made->expressions += expression();
        return made;
    }
    QString expression()
    {
        ++m_names;
        return QString(m_names % 40, u'!') + QString("M%1").arg(m_names % 16);
    }

    Changes changeWhole(LoadedDescription &description)
    {
        DescriptionChange change;
        const bool isLite = description.kind == DescriptionKind::Lite;
        const int count = int(isLite ? description.lite.size() : description.standard.size());
        const auto cores = [&](const QString &clock, const QList<SignalEntry> &signals) {
            return QString("clock %1, signals: %2").arg(clock).arg(signalBits(signals));
        };
        switch (below(6)) {
        case 0:
            change.subject = Subject::CheckValue;
            change.before = description.id;
            change.after = description.id = fresh();
            break;
        case 1:
            change = {.subject = Subject::Version, .origin = Origin::Saved, .before = "3.0"};
            change.after = description.version = "2.5";
            break;
        case 2:
            change = {.subject = Subject::CheckValue,
                      .origin = Origin::Saved,
                      .before = std::exchange(description.id, {})};
            break;
        case 3: // a core comes
            change = {.action = Action::Added, .core = count};
            if (isLite) {
                description.lite.insert(below(count + 1), liteCore(count));
                const auto &made =
                    *std::ranges::find(description.lite, count, &LiteCoreConfig::index);
                change.after = cores(made.sample_clock, made.signals);
            } else {
                auto made = core(count);
                change.after = cores(made->sample_clock, made->signals);
                description.standard.insert(description.standard.begin() + below(count + 1),
                                            std::move(made));
            }
            break;
        case 4: // the cores change places
            if (count < 2)
                return {};
            change = {.subject = Subject::CoreOrder,
                      .before = count == 2 ? "0, 1" : "0, 1, 2",
                      .after = count == 2 ? "1, 0" : "1, 0, 2"};
            if (isLite)
                description.lite.swapItemsAt(0, 1);
            else
                std::swap(description.standard[0], description.standard[1]);
            break;
        default: // the same cores of the other kind
            if (isLite)
                return {};
            change = {.subject = Subject::Kind, .before = "Standard", .after = "Lite"};
            description.kind = DescriptionKind::Lite;
            for (const auto &core : description.standard) {
                LiteCoreConfig lite(core->index);
                lite.sample_clock = core->sample_clock;
                lite.trig_type = core->trig_type;
                lite.module_name = core->module_name;
                lite.signals = core->signals;
                description.lite += lite;
            }
            description.standard.clear();
        }
        return {change};
    }

    template <typename Value>
    bool set(DescriptionChange &change, Subject subject, Value &value, const Value &now)
    {
        const auto text = [](const Value &shown) {
            if constexpr (std::is_same_v<Value, bool>)
                return QString(shown ? "yes" : "no");
            else if constexpr (std::is_same_v<Value, int>)
                return QString::number(shown);
            else
                return shown;
        };
        change.subject = subject;
        change.before = text(value);
        change.after = text(now);
        value = now;
        return true;
    }

    bool changeLite(LiteCoreConfig &core, DescriptionChange &change)
    {
        switch (below(7)) {
        case 0:
            return set(change, Subject::SampleClock, core.sample_clock, fresh());
        case 1:
            return set(change, Subject::TrigType, core.trig_type, 7);
        case 2:
            return set(change, Subject::LiteAmount, core.capture_amount, 5000);
        case 3:
            return set(change, Subject::ModuleName, core.module_name, fresh());
        case 4:
            return set(change, Subject::Implementation, core.implemention, 9);
        case 5:
            return set(change, Subject::InputRegister, core.input_register_enabled, true);
        default:
            return set(change, Subject::InitData, core.capture_init_data_enabled, true);
        }
    }

    bool changeCore(CoreConfig &core, DescriptionChange &change)
    {
        const int setting = below(8);
        if (setting < 3)
            change.origin = Origin::Saved;
        switch (setting) {
        case 0:
            return set(change, Subject::Windows, core.window_num, 9);
        case 1:
            return set(change, Subject::Amount, core.capture_amount, 5000);
        case 2:
            return set(change, Subject::Position, core.trigger_pos, 5000);
        case 3:
            return set(change, Subject::SampleClock, core.sample_clock, fresh());
        case 4:
            return set(change, Subject::TrigType, core.trig_type, 7);
        case 5:
            return set(change, Subject::StorageDepth, core.storage_depth, 5000);
        case 6:
            return set(change, Subject::ModuleName, core.module_name, fresh());
        default:
            core.dynamic = !core.dynamic;
            change.subject = Subject::ExpressionType;
            change.before = core.dynamic ? "Static" : "Dynamic";
            change.after = core.dynamic ? "Dynamic" : "Static";
            return true;
        }
    }

    bool changeUnit(MatchUnit &unit, DescriptionChange &change)
    {
        const int setting = below(10);
        if (setting < 5)
            change.origin = Origin::Saved;
        const QString port = unit.trigger ? QString::number(unit.trigger->index) : QString();
        const QString type = matchTypeText(unit.match_type);
        const QString typeText = type.isEmpty() ? QString::number(int(unit.match_type)) : type;
        switch (setting) {
        case 0: {
            const QString function = matchFunctionText(unit.func);
            change.subject = Subject::Function;
            change.before = function.isEmpty() ? QString::number(int(unit.func)) : function;
            change.after = "12";
            unit.func = MatchFunction(12);
            return true;
        }
        case 1:
            return set(change, Subject::Value, unit.value0, fresh());
        case 2:
            return set(change, Subject::Maximum, unit.value1, fresh());
        case 3:
            return set(change, Subject::Count, unit.counter, 5000);
        case 4:
            return set(change, Subject::Continuous, unit.countinuous, true);
        case 5:
            return set(change, Subject::HasCounter, unit.counter_enable, true);
        case 6:
            return set(change, Subject::CounterWidth, unit.counter_width, 11);
        case 7:
            change.subject = Subject::MatchType;
            change.before = typeText;
            change.after = "12";
            unit.match_type = MatchType(12);
            return true;
        case 8:
            change.subject = Subject::UnitPort;
            change.before = port;
            change.after = "8";
            unit.trigger = unit.core->triggers[8].get();
            return true;
        default:
            change.subject = Subject::Unit;
            change.action = unit.enabled ? Action::Removed : Action::Added;
            (unit.enabled ? change.before : change.after) =
                port.isEmpty() ? typeText : typeText + " on port " + port;
            unit.enabled = !unit.enabled;
            unit.value0 = fresh(); // goes with it
            return true;
        }
    }

    bool changeExpressions(CoreConfig &core, DescriptionChange &change)
    {
        QStringList &list = core.expressions;
        change.subject = Subject::Expression;
        change.origin = core.dynamic ? Origin::Saved : Origin::Design;
        const int setting = below(4);
        if (setting > 0 && list.isEmpty())
            return false;
        const int from = setting == 0 ? below(int(list.size()) + 1) : below(int(list.size()));
        switch (setting) {
        case 0:
            change.action = Action::Added;
            change.after = expression();
            list.insert(from, change.after);
            return true;
        case 1:
            change.action = Action::Removed;
            change.before = list.takeAt(from);
            return true;
        case 2:
            return set(change, Subject::Expression, list[from], expression());
        default:
            if (list.size() < 3)
                return false;
            change.action = Action::Moved;
            change.name = list.first();
            change.before = "0";
            change.after = QString::number(list.size() - 1);
            list.move(0, list.size() - 1);
            return true;
        }
    }

    bool changeSignals(QList<SignalEntry> &list, DescriptionChange &change)
    {
        if (below(5) == 0 || list.isEmpty()) {
            SignalEntry entry = below(2) ? bus() : SignalEntry{fresh(), fresh(), {}};
            change.subject = entry.members.isEmpty() ? Subject::Signal : Subject::Bus;
            change.signalCount = std::max(1, int(entry.members.size()));
            change.action = Action::Added;
            change.after = entry.name;
            list.insert(below(int(list.size()) + 1), entry);
            return true;
        }
        const int place = below(int(list.size()));
        const bool isBus = !list[place].members.isEmpty();
        change.subject = isBus ? Subject::Bus : Subject::Signal;
        switch (below(7)) {
        case 0:
            change.signalCount = std::max(1, int(list[place].members.size()));
            change.action = Action::Removed;
            change.before = list.takeAt(place).name;
            return true;
        case 1:
            set(change, change.subject, list[place].name, fresh());
            change.action = Action::Renamed;
            return true;
        case 2:
            change.name = list[place].name;
            change.origin = Origin::Saved;
            return set(change, isBus ? Subject::BusText : Subject::SignalText, list[place].text,
                       fresh());
        case 3:
            return moveEntry(list, place, change);
        case 4:
            return isBus ? dissolve(list, place, change) : form(list, place, change);
        case 5:
            return isBus && takeMemberOut(list, place, change);
        default:
            if (!isBus)
                return false;
            set(change, Subject::Signal,
                list[place].members[below(int(list[place].members.size()))].name, fresh());
            change.action = Action::Renamed;
            return true;
        }
    }

    /// To the front, past more signals than the entry has, so that it is the one that was moved.
    bool moveEntry(QList<SignalEntry> &list, int place, DescriptionChange &change)
    {
        const QString name = list[place].name;
        const qsizetype passed = signalBits(list.mid(0, place));
        if (passed <= signalBits({list[place]}) ||
            std::ranges::count(list, name, &SignalEntry::name) > 1)
            return false;
        change.signalCount = std::max(1, int(list[place].members.size()));
        change.action = Action::Moved;
        change.name = name;
        change.before = QString::number(passed);
        change.after = "0";
        list.move(place, 0);
        return true;
    }

    bool dissolve(QList<SignalEntry> &list, int place, DescriptionChange &change)
    {
        const SignalEntry bus = list.takeAt(place);
        change.action = Action::Dissolved;
        change.name = bus.name;
        for (qsizetype i = 0; i < bus.members.size(); ++i)
            list.insert(place + i, bus.members[i]);
        return true;
    }

    bool form(QList<SignalEntry> &list, int place, DescriptionChange &change)
    {
        SignalEntry bus{fresh(), {}, {}};
        while (place < list.size() && list[place].members.isEmpty())
            bus.members += list.takeAt(place);
        list.insert(place, bus);
        change.subject = Subject::Bus;
        change.action = Action::Formed;
        change.name = bus.name;
        return true;
    }

    bool takeMemberOut(QList<SignalEntry> &list, int place, DescriptionChange &change)
    {
        SignalEntry &bus = list[place];
        if (bus.members.size() < 2)
            return false;
        change.subject = Subject::BusMembers;
        change.name = bus.name;
        change.before = flatSignalNames(bus.members).join(", ");
        const SignalEntry member = bus.members.takeLast();
        change.after = flatSignalNames(bus.members).join(", ");
        list.insert(place + 1, member);
        return true;
    }

    QRandomGenerator m_random;
    int m_names = 0;
};

QStringList linesOf(const Changes &changes)
{
    QStringList lines;
    for (const DescriptionChange &change : changes)
        lines += nameOf(change.subject) + u' ' + lineOf(change);
    return lines;
}

} // namespace

void tst_DescriptionDiff::oneRandomChange()
{
    Maker maker(16);
    std::set<std::pair<Subject, Action>> met;
    for (int round = 0; round < 800; ++round) {
        LoadedDescription description = maker.description();
        const LoadedDescription before = load(bytesOf(description));
        QCOMPARE(linesOf(descriptionChanges(before, before)), QStringList());
        const Changes expected = maker.change(description);
        const LoadedDescription after = load(bytesOf(description));
        const Changes found = descriptionChanges(before, after);
        QVERIFY2(found == expected, qPrintable(linesOf(found).join(u'\n') + "\nexpected\n" +
                                               linesOf(expected).join(u'\n')));
        QCOMPARE(descriptionChanges(after, before).size(), expected.size());
        for (const DescriptionChange &change : expected)
            met.emplace(change.subject, change.action);
    }
    // Every subject was met, those with several actions in each of theirs: Signal 4, Bus 6, Core 1,
    // Unit 2, Expression 4, and 28 that only change.
    QCOMPARE(int(met.size()), 45);
}

// The example of two cores that a user reads.
void tst_DescriptionDiff::summaries()
{
    const auto description = [](int depth, const QStringList &names, int windows) {
        LoadedDescription made;
        made.version = "3.0";
        for (int i = 0; i < 2; ++i)
            made.standard.push_back(std::make_unique<CoreConfig>(i));
        for (const QString &name : names)
            made.standard[0]->signals += SignalEntry{name, {}, {}};
        made.standard[0]->window_num = windows;
        made.standard[1]->storage_depth = depth;
        made.standard[1]->triggers[2]->signals = made.standard[0]->signals;
        return made;
    };
    const LoadedDescription before = description(1024, {"a", "b", "c"}, 1);
    const auto summary = [&before](const LoadedDescription &after) {
        return summaryOf(descriptionChanges(before, after));
    };
    QCOMPARE(summary(description(1024, {"a", "b", "c"}, 1)), "The design is the same");
    QCOMPARE(summary(description(1024, {"a", "b", "c"}, 2)),
             "The design is the same; settings in the file: 1 changed");
    QCOMPARE(summary(description(2048, {"x", "b", "y", "c"}, 2)),
             "core 0: signals: 1 added, 1 renamed; core 1: port 2: 1 added, 1 renamed, memory "
             "1024 \u2192 2048; settings in the file: 1 changed");
    LoadedDescription many = description(1024, {"a", "b", "c"}, 1);
    for (const auto &unit : many.standard[1]->matchUnits)
        unit->match_type = MatchType::Range;
    QVERIFY(summary(many).endsWith("M5: match type Basic \u2192 Range, 10 more"));
    LoadedDescription fewer = description(1024, {"b"}, 1);
    fewer.standard.pop_back();
    QCOMPARE(summary(fewer), "core 1 removed: signals: 0; core 0: signals: 2 removed");
}

void tst_DescriptionDiff::refused()
{
    const auto reason = [](const QByteArray &bytes) {
        const Result<LoadedDescription> loaded = loadDescription(bytes);
        return loaded ? QString() : loaded.error().message;
    };
    QCOMPARE(reason("<KEO_CONFIG><Version>3.0</Version></KEO_CONFIG>"),
             "The description has no core.");
    QCOMPARE(reason("<KEO_CONFIG><Version>9</Version><KoCore/></KEO_CONFIG>"),
             "The version of Keo config file is too high.");
    QVERIFY(reason("<KEO_CONFIG><Mode>Wide</Mode></KEO_CONFIG>").contains("'Wide'"));
    QVERIFY(!reason("<KEO_CONFIG><Version>").isEmpty());
    QVERIFY(!reason({}).isEmpty());
}

KEO_TEST_MAIN(tst_DescriptionDiff)
#include "tst_descriptiondiff.moc"
