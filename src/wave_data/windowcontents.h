#pragma once

#include "layoutnode.h"
#include "layoutsnapshot.h"
#include "signalelement.h"

#include <QBitArray>
#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

class QDomDocument;
class QDomElement;

namespace WaveMonitor {

/// What one viewer shows: the captured signals, the rows that show them, and the trigger. Owns all
/// three, tells nobody of changes, and knows no widget. Samples are implicitly shared, so handing
/// them out copies nothing.
///
/// The XML form is an element `Window` with the children `TriggerPosition` (sample index as decimal
/// text), `Signals` (one `Signal` an element, ascending id, attributes name, id and text, its text
/// one character "0" or "1" a sample) and `Layout` (one `Node` a row, see the layout nodes; a bus
/// holds the nodes of its members). Readers reject nothing: what is missing reads as empty or 0, a
/// number that does not parse as 0, an unknown format as hexadecimal. Writers leave characters out
/// that XML cannot hold.
class WindowContents final
{
public:
    WindowContents();
    WindowContents(const WindowContents &) = delete;
    WindowContents &operator=(const WindowContents &) = delete;
    /// Rows stay where they are in memory. What was moved from may only be assigned to or deleted.
    WindowContents(WindowContents &&other) noexcept;
    WindowContents &operator=(WindowContents &&other) noexcept;
    ~WindowContents();

    /// By id. A copy of the map shares everything with it.
    [[nodiscard]] const QMap<int, SignalElement> &signalMap() const { return m_signals; }
    /// Null when no element has that id. Valid until the elements next change.
    [[nodiscard]] const SignalElement *signal(int id) const;
    /// Takes the user's name away from an element; nothing happens when there is none.
    void clearSignalText(int id);
    /// Length of the longest signal in samples, 0 without signals.
    [[nodiscard]] qsizetype maxDataLength() const;

    /// The root of the rows; its children are free to be rearranged in place.
    [[nodiscard]] LayoutNode &layout() { return *m_layout; }
    [[nodiscard]] const LayoutNode &layout() const { return *m_layout; }
    /// The row's own text, else the element's, else the element's name.
    [[nodiscard]] QString displayName(const SignalLayoutNode &row) const;

    [[nodiscard]] int triggerPosition() const { return m_triggerPosition; } ///< sample index
    /// Also makes the trigger's sample the shown one.
    void setTriggerPosition(int sample);
    /// The sample whose values stand beside the names.
    [[nodiscard]] int shownSample() const { return m_shownSample; }
    void setShownSample(int sample) { m_shownSample = sample; }

    /// Adds a signal, or replaces the one with its id, and appends a row for it.
    SignalLayoutNode &addSignal(const SignalElement &signal);
    /// Adds the signals of \a bus and appends one bus row for all of them.
    BusLayoutNode &addBus(const BusElement &bus);
    /// Gives the signal with id i the samples \a data[i]. False, and no change, unless there are as
    /// many arrays as signals.
    bool updateData(const QList<QBitArray> &data);
    /// Drops all signals and rows. The trigger stays.
    void clear();
    /// Drops all rows, the hidden ones as well.
    void clearLayout();

    /// The rows as they are, the hidden ones, and the users' names of the signals.
    [[nodiscard]] LayoutSnapshot snapshot() const;
    /// Puts rows and names back. A row that still exists, by its key, stays the same node. Gives
    /// those that have no place any more, each without members.
    [[nodiscard]] LayoutNode::List restore(const LayoutSnapshot &snapshot);
    /// The last hidden one last.
    [[nodiscard]] const std::vector<HiddenRow> &hiddenRows() const { return m_hidden; }
    /// Takes over what another window of the same signals has hidden. The places are lost.
    void setHiddenRows(std::vector<HiddenRow> rows) { m_hidden = std::move(rows); }
    /// Are there signals without a row?
    [[nodiscard]] bool hasHidden() const;
    /// The snapshot with the rows that were hidden in their places again, and a row for every
    /// signal that has none.
    [[nodiscard]] LayoutSnapshot withAllShown() const;

    /// The name for a new bus over top-level rows \a selected, given in row order: made of the
    /// signals' names if no bus is among them and they follow one another (see
    /// WaveMonitor::defaultBusName), else a numbered group name that no other top-level bus uses.
    [[nodiscard]] QString newBusName(const QList<const LayoutNode *> &selected) const;

    /// A new element `Window`, attached to nothing.
    [[nodiscard]] QDomElement writeWindow(QDomDocument &document) const;
    /// Replaces signals, rows and, if the element has one, the trigger. A window without `Layout`
    /// shows every signal in a row of its own. False, and no change, for any other element.
    bool readWindow(const QDomElement &window);
    /// A new element `Layout`, attached to nothing.
    [[nodiscard]] QDomElement writeLayout(QDomDocument &document) const;
    /// Replaces the rows. A null element leaves none.
    void readLayout(const QDomElement &layout);

private:
    QMap<int, SignalElement> m_signals;
    std::unique_ptr<LayoutNode> m_layout;
    std::vector<HiddenRow> m_hidden; ///< the last hidden one last; in no file
    int m_triggerPosition = 0;
    int m_shownSample = 0;
};

} // namespace WaveMonitor
