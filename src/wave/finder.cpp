#include "finder.h"

#include "goto.h"

#include <wave/find/findbar.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>
#include <wave_data/rowtext.h>

#include <QKeyEvent>

#include <algorithm>

namespace WaveMonitor {

namespace {

/// The edge that a word or its beginning names.
std::optional<SamplePattern::Kind> edgeNamed(const QString &text)
{
    const QString word = text.toLower();
    const auto begins = [&word](const char *full) {
        return QString::fromLatin1(full).startsWith(word);
    };
    if (word.isEmpty() || begins("edges") || begins("changes") || begins("any edge"))
        return SamplePattern::Change;
    if (begins("rising edges") || begins("rises"))
        return SamplePattern::Rise;
    if (begins("falling edges") || begins("falls"))
        return SamplePattern::Fall;
    return {};
}

/// All rows below \a parent as the tree shows them when all buses are open.
void appendRows(QModelIndexList &rows, const QAbstractItemModel &model, const QModelIndex &parent)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        rows.append(index);
        appendRows(rows, model, index);
    }
}

QModelIndexList allRows(const QAbstractItemModel &model)
{
    QModelIndexList rows;
    appendRows(rows, model, {});
    return rows;
}

/// Could a name hardly begin like this?
bool beginsLikeNumber(const QString &text)
{
    const QChar first = text.at(0);
    return first.isDigit() || first == u'-' || first == u'\'';
}

} // namespace

Finder::Finder(const ViewerPanes &panes, GoTo *goTo, FindBar *bar, QObject *parent)
    : QObject(parent), m_panes(panes), m_goTo(goTo), m_bar(bar)
{
    connect(bar, &FindBar::changed, this, [this] {
        m_round.clear();
        search();
    });
    connect(bar, &FindBar::closed, this, &Finder::stop);
    connect(bar, &FindBar::next, this, [this] { go(Direction::Forth); });
    connect(bar, &FindBar::previous, this, [this] { go(Direction::Back); });
}

void Finder::refresh()
{
    if (!m_bar->isHidden())
        search();
}

bool Finder::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || m_bar->isHidden())
        return QObject::eventFilter(watched, event);
    const auto *press = static_cast<QKeyEvent *>(event);
    const bool isPlain = press->modifiers() == Qt::NoModifier;
    if (press->key() != Qt::Key_F3 || (!isPlain && press->modifiers() != Qt::ShiftModifier))
        return QObject::eventFilter(watched, event);
    go(isPlain ? Direction::Forth : Direction::Back);
    return true;
}

QModelIndex Finder::selectedRow() const
{
    return m_panes.tree->selectedRows().value(0);
}

QModelIndexList Finder::rowsNamed(const QString &text) const
{
    QModelIndexList rows = allRows(*m_panes.model);
    rows.removeIf([&](const QModelIndex &row) {
        return !row.data().toString().contains(text, Qt::CaseInsensitive);
    });
    return rows;
}

void Finder::search()
{
    m_kind = Kind::Nothing;
    m_hits = {};
    m_rows.clear();
    const QString text = m_bar->text();
    FindBar::Kind kind = m_bar->kind();
    if (text.isEmpty() && kind != FindBar::Edge) {
        m_bar->tell({}, FindBar::Outcome::Found);
        m_panes.ruler->setHits({}, {});
        return;
    }
    const QModelIndex row = selectedRow();
    const LayoutNode *node = row.isValid() ? m_panes.model->node(row) : nullptr;
    const QList<QBitArray> members =
        node ? rowMembers(m_panes.model->contents(), *node) : QList<QBitArray>();
    const DataFormat::Type radix = node ? node->format->type() : DataFormat::Hexadecimal;
    if (kind == FindBar::Anything) {
        const bool isName = !rowsNamed(text).isEmpty();
        const bool isValue = node && parsePattern(text, members.size(), radix);
        // In the order in which they count.
        if (isComparison(text) || (isValue && beginsLikeNumber(text)))
            kind = FindBar::Value; // NOLINT(bugprone-branch-clone)
        else if (!isName && edgeNamed(text))
            kind = FindBar::Edge;
        else if (!isName && (isValue || beginsLikeNumber(text)))
            kind = FindBar::Value;
        else
            kind = FindBar::Name;
    }
    if (kind == FindBar::Name) {
        searchNames(text);
        return;
    }
    if (!node) {
        fail(tr("Select a row to search its samples."));
        return;
    }
    const QString name = row.data().toString();
    if (kind == FindBar::Value) {
        const auto pattern = parsePattern(text, members.size(), radix);
        if (!pattern)
            fail(pattern.error().message);
        else
            searchSamples(tr("Value of %1").arg(name), *pattern);
        return;
    }
    const auto edge = edgeNamed(text);
    if (!edge)
        fail(tr("An edge is \"edge\", \"rising\" or \"falling\"."));
    else if (*edge != SamplePattern::Change && members.size() != 1)
        fail(tr("The values of a bus change, they don't rise and fall: look for \"edge\"."));
    else
        searchSamples(tr("Edge of %1").arg(name), {.kind = *edge});
}

void Finder::searchNames(const QString &text)
{
    m_panes.ruler->setHits({}, {});
    const QModelIndexList rows = rowsNamed(text);
    if (rows.isEmpty()) {
        fail(tr("No name has \"%1\" in it.").arg(text));
        return;
    }
    m_kind = Kind::Name;
    m_rows = QList<QPersistentModelIndex>(rows.cbegin(), rows.cend());
    tellRow();
}

void Finder::searchSamples(const QString &what, const SamplePattern &pattern)
{
    const LayoutNode *row = m_panes.model->node(selectedRow());
    m_hits = SampleSearch(rowMembers(m_panes.model->contents(), *row), pattern).all();
    m_what = what;
    if (m_hits.count() == 0) {
        fail(tr("%1: none found").arg(what));
        return;
    }
    m_kind = Kind::Samples;
    tellSample();
}

void Finder::go(Direction direction)
{
    if (m_kind == Kind::Name)
        goToRow(direction);
    else if (m_kind == Kind::Samples)
        goToSample(direction);
}

void Finder::goToRow(Direction direction)
{
    const QModelIndexList rows = allRows(*m_panes.model);
    const qsizetype from = rows.indexOf(selectedRow());
    const bool isForth = direction == Direction::Forth;
    const auto place = [&rows](const QPersistentModelIndex &row) { return rows.indexOf(row); };
    const auto next = isForth
                          ? std::find_if(m_rows.cbegin(), m_rows.cend(),
                                         [&](const auto &row) { return place(row) > from; })
                          : std::find_if(m_rows.crbegin(), m_rows.crend(), [&](const auto &row) {
                                return place(row) < from;
                            }).base();
    QPersistentModelIndex found;
    m_round.clear();
    if (isForth && next != m_rows.cend()) {
        found = *next;
    } else if (!isForth && next != m_rows.cbegin()) {
        found = *(next - 1);
    } else {
        found = isForth ? m_rows.first() : m_rows.last();
        m_round = isForth ? tr(", from the top again") : tr(", from the bottom again");
    }
    m_panes.tree->pickOnly(found);
    m_panes.tree->scrollTo(found); // opens its bus
    tellRow();
}

void Finder::goToSample(Direction direction)
{
    const int from = m_goTo->place();
    const bool isForth = direction == Direction::Forth;
    std::optional<qsizetype> found = isForth ? m_hits.next(from) : m_hits.previous(from);
    m_round.clear();
    if (!found) {
        found = isForth ? m_hits.next(-1) : m_hits.previous(m_panes.model->maxDataLength());
        m_round = isForth ? tr(", from the start again") : tr(", from the end again");
    }
    if (!found)
        return;
    m_goTo->sample(*found);
    tellSample();
}

void Finder::tellRow()
{
    const qsizetype at = m_rows.indexOf(QPersistentModelIndex(selectedRow()));
    QString text = at < 0 ? tr("Name: %1 found").arg(m_rows.size())
                          : tr("Name: %1 of %2").arg(at + 1).arg(m_rows.size());
    if (at >= 0 && m_rows.size() > 1)
        text += m_round;
    m_bar->tell(text, FindBar::Outcome::Found);
}

void Finder::tellSample()
{
    const int place = m_goTo->place();
    const bool isHit = m_hits.next(place - 1) == place;
    const qsizetype count = m_hits.count();
    QString text =
        isHit ? tr("%1: %2 of %3")
                    .arg(m_what, QString::number(m_hits.countUpTo(place)), QString::number(count))
              : tr("%1: %2 found").arg(m_what, QString::number(count));
    if (isHit && count > 1)
        text += m_round;
    m_bar->tell(text, FindBar::Outcome::Found);
    m_panes.ruler->setHits(m_hits, isHit ? std::optional(place) : std::nullopt);
}

void Finder::fail(const QString &text)
{
    m_bar->tell(text, FindBar::Outcome::Failed);
    m_panes.ruler->setHits({}, {});
}

void Finder::stop()
{
    m_kind = Kind::Nothing;
    m_hits = {};
    m_rows.clear();
    m_panes.ruler->setHits({}, {});
}

} // namespace WaveMonitor
