// Arrangements of rows that go from one build of a design to the next.

#include <wave_data/layoutcarry.h>
#include <wave_data/windowcontents.h>

#include <support/testmain.h>

#include <QRandomGenerator>

#include <algorithm>

using namespace WaveMonitor;
using KEO::CarriedSetting;
using KEO::CarryOutcome;

class tst_LayoutCarry : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void ontoItself();
    void eachRowOnce();
    void places_data();
    void places();
};

namespace {

constexpr int kSeeds = 400;

/// A window by its description: rows apart by blanks, "b(x y)" is a bus.
WindowContents described(const QString &text)
{
    WindowContents contents;
    QString bus;
    QList<SignalElement> members;
    int id = 0;
    for (QString word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (word.contains(u'('))
            bus = word.section(u'(', 0, 0);
        const bool ends = word.endsWith(u')');
        const SignalElement element{id++, word.section(u'(', -1).remove(u')'), {}, {}};
        if (bus.isEmpty()) {
            contents.addSignal(element);
            continue;
        }
        members.append(element);
        if (!ends)
            continue;
        BusElement row{bus, {}, {}};
        for (SignalElement &member : members)
            row.signals.append(&member);
        contents.addBus(row);
        bus.clear();
        members.clear();
    }
    return contents;
}

QString textOf(const std::vector<RowRecord> &rows, const WindowContents &contents)
{
    QStringList words;
    for (const RowRecord &row : rows) {
        if (row.type == LayoutNode::Bus)
            words.append(row.name + u'(' + textOf(row.members, contents) + u')');
        else
            words.append(contents.signal(row.id)->name);
    }
    return words.join(u' ');
}

QHash<int, int> idsByName(const WindowContents &was, const WindowContents &is)
{
    QHash<int, int> ids;
    for (const SignalElement &old : was.signalMap()) {
        for (const SignalElement &now : is.signalMap()) {
            if (old.name == now.name)
                ids.insert(old.id, now.id);
        }
    }
    return ids;
}

QStringList shuffled(QStringList list, QRandomGenerator &random)
{
    std::shuffle(list.begin(), list.end(), random);
    return list;
}

/// Some of the signals \a names, a few of them in buses.
WindowContents randomDescription(const QStringList &names, QRandomGenerator &random)
{
    QStringList words;
    int buses = 0;
    for (qsizetype i = 0; i < names.size();) {
        const qsizetype width =
            random.bounded(3) ? 1 : qMin<qsizetype>(1 + random.bounded(4), names.size() - i);
        const QString row = names.mid(i, width).join(u' ');
        words.append(width == 1 ? row : QStringLiteral("bus%1(%2)").arg(buses++).arg(row));
        i += width;
    }
    return described(words.join(u' '));
}

void lookRandomly(RowRecord &row, QRandomGenerator &random)
{
    if (random.bounded(4) == 0)
        row.text = QStringLiteral("my %1").arg(random.bounded(100));
    if (random.bounded(4) == 0)
        row.color = random.bounded(0x1000000);
    if (random.bounded(4) == 0 && row.type == LayoutNode::Bus)
        row.format = DataFormat::Type(random.bounded(5));
    for (RowRecord &member : row.members)
        lookRandomly(member, random);
}

/// What a user does: groups rows, moves them, hides some, gives them looks.
Arrangement arrangeRandomly(const WindowContents &contents, QRandomGenerator &random)
{
    LayoutSnapshot snapshot = contents.snapshot();
    auto &rows = snapshot.rows;
    if (random.bounded(2)) {
        std::shuffle(rows.begin(), rows.end(), random);
        BusLayoutNode node;
        RowRecord bus = recordRow(node);
        bus.name = QStringLiteral("mine");
        for (size_t taken = random.bounded(3); taken > 0; --taken) {
            const auto row = std::ranges::find(rows, LayoutNode::Signal, &RowRecord::type);
            if (row == rows.end())
                break;
            bus.members.push_back(*row);
            rows.erase(row);
        }
        if (!bus.members.empty())
            rows.insert(rows.begin() + random.bounded(int(rows.size() + 1)), bus);
    }
    for (RowRecord &row : rows)
        lookRandomly(row, random);
    QSet<LayoutNode::Key> keys;
    Arrangement arrangement;
    for (const RowRecord &row : rows) {
        if (row.type == LayoutNode::Bus && random.bounded(3) == 0)
            arrangement.open.insert(row.key);
        else if (random.bounded(5) == 0)
            keys.insert(row.key);
    }
    snapshot = withRowsHidden(snapshot, keys);
    arrangement.rows = snapshot.rows;
    arrangement.hidden = snapshot.hidden;
    return arrangement;
}

/// By the name of a signal, or of a bus: what shows of its row, empty at the default.
QMap<QString, QString> looksOf(const Arrangement &arrangement, const WindowContents &contents)
{
    QMap<QString, QString> looks;
    const auto visit = [&](auto &self, const RowRecord &row, const QString &hidden) -> void {
        QString look = row.text + hidden;
        if (row.color != LayoutNode::kDefaultColor)
            look += u'#' + QString::number(row.color);
        const bool isBus = row.type == LayoutNode::Bus;
        if (isBus && row.format != DataFormat::Hexadecimal)
            look += u'/' + QString::number(row.format);
        if (row.name == u"mine")
            look += u"made";
        if (arrangement.open.contains(row.key))
            look += u"open";
        looks[isBus ? "Bus " + row.name : "Row " + contents.signal(row.id)->name] = look;
        for (const RowRecord &member : row.members)
            self(self, member, {});
    };
    for (const RowRecord &row : arrangement.rows)
        visit(visit, row, {});
    for (const HiddenRow &row : arrangement.hidden)
        visit(visit, row.row, QStringLiteral("hidden"));
    return looks;
}

QStringList names(int first, int last)
{
    QStringList all;
    for (int i = first; i < last; ++i)
        all.append(QStringLiteral("s%1").arg(i));
    return all;
}

} // namespace

void tst_LayoutCarry::ontoItself()
{
    for (int seed = 0; seed < kSeeds; ++seed) {
        QRandomGenerator random(seed);
        const QStringList signals = names(0, 1 + random.bounded(15));
        const QRandomGenerator before = random;
        const WindowContents was = randomDescription(signals, random);
        random = before;
        const WindowContents is = randomDescription(signals, random);
        const Arrangement user = arrangeRandomly(was, random);
        const auto [now, account] = carryArrangement(user, was, is, idsByName(was, is), {});
        QCOMPARE(textOf(now.rows, is), textOf(user.rows, was));
        QCOMPARE(looksOf(now, is), looksOf(user, was));
        for (const CarriedSetting &entry : account)
            QCOMPARE(entry.outcome, CarryOutcome::Kept);
    }
}

void tst_LayoutCarry::eachRowOnce()
{
    QMap<CarryOutcome, int> outcomes;
    for (int seed = 0; seed < kSeeds; ++seed) {
        QRandomGenerator random(seed);
        const WindowContents was = randomDescription(names(0, 12), random);
        const QStringList left = shuffled(names(random.bounded(4), 9 + random.bounded(8)), random);
        const WindowContents is = randomDescription(left, random);
        const Arrangement user = arrangeRandomly(was, random);
        auto [now, account] = carryArrangement(user, was, is, idsByName(was, is), "here");
        const auto looks = looksOf(user, was);
        const auto looksNow = looksOf(now, is);
        const QByteArray where = "seed " + QByteArray::number(seed);

        for (auto look = looks.begin(); look != looks.end(); ++look) {
            const auto entry = std::ranges::find(account, look.key(), &CarriedSetting::setting);
            QVERIFY2((entry != account.end()) == !look->isEmpty(), where);
            if (look->isEmpty())
                continue;
            const bool isSignal = look.key().startsWith("Row ");
            if (isSignal)
                QVERIFY2((entry->outcome == CarryOutcome::Lost) ==
                             !left.contains(look.key().mid(4)),
                         where);
            if (isSignal && entry->outcome != CarryOutcome::Lost)
                QVERIFY2(looksNow[look.key()] == *look, where);
            if (look.key() == "Bus mine")
                QVERIFY2(looksNow.contains(look.key()) == (entry->outcome != CarryOutcome::Lost),
                         where);
            QVERIFY2(entry->reason.isEmpty() == (entry->outcome == CarryOutcome::Kept), where);
            ++outcomes[entry->outcome];
            account.erase(entry);
        }
        // What is left tells of the order.
        QVERIFY2(account.size() <= 1, where);
        if (!account.isEmpty())
            QCOMPARE(account[0].setting, "Order of the rows");
        // No signal of the new design is missing, or there twice.
        QStringList shown;
        for (auto look = looksNow.begin(); look != looksNow.end(); ++look) {
            if (look.key().startsWith("Row "))
                shown.append(look.key().mid(4));
        }
        QStringList all = left;
        all.sort();
        shown.sort();
        QVERIFY2(shown == all, where);
        QString text = textOf(now.rows, is);
        for (const HiddenRow &row : now.hidden)
            text += u' ' + textOf({row.row}, is);
        QCOMPARE(text.count("s") - text.count("bus"), left.size());
    }
    for (const CarryOutcome outcome :
         {CarryOutcome::Kept, CarryOutcome::Adapted, CarryOutcome::Lost})
        QVERIFY(outcomes[outcome] > 20);
}

void tst_LayoutCarry::places_data()
{
    addColumns<QString, QList<int>, QString, QString>({"was", "order", "is", "rows"});
    addRow("a hidden row is no order", "a b c", QList{0, 2}, "c b a", "c a");
    addRow("an untouched order is the description's", "a b c", QList{0, 1, 2}, "n c b a",
           "n c b a");
    addRow("an arranged one stays", "a b c", QList{2, 0, 1}, "a b n c m", "c m a b n");
    addRow("a wider bus", "b1(x y) z", QList{0, 1}, "b2(x n y) z", "b2(x n y) z");
    addRow("a wider bus that was moved", "b1(x y) z", QList{1, 0}, "b2(m x n y) z",
           "z b2(m x n y)");
    addRow("a new bus", "x z", QList{1, 0}, "x b(m n) z", "z x b(m n)");
    addRow("a bus that has come apart", "b(x y) z", QList{1, 0}, "y z x", "z b(x y)");
}

void tst_LayoutCarry::places()
{
    QFETCH(QString, was);
    QFETCH(QList<int>, order);
    QFETCH(QString, is);
    const WindowContents old = described(was);
    const WindowContents now = described(is);
    Arrangement user;
    QSet<LayoutNode::Key> hidden;
    for (const RowRecord &row : old.snapshot().rows)
        hidden.insert(row.key);
    for (const int row : std::as_const(order)) {
        user.rows.push_back(old.snapshot().rows[size_t(row)]);
        hidden.remove(user.rows.back().key);
    }
    user.hidden = withRowsHidden(old.snapshot(), hidden).hidden;
    const auto carried = carryArrangement(user, old, now, idsByName(old, now), {});
    QTEST(textOf(carried.arrangement.rows, now), "rows");
    const bool tellsOrder = std::ranges::any_of(carried.account, [](const CarriedSetting &entry) {
        return entry.setting == "Order of the rows";
    });
    QCOMPARE(tellsOrder, !std::ranges::is_sorted(order));
}

KEO_TEST_MAIN(tst_LayoutCarry)
#include "tst_layoutcarry.moc"
