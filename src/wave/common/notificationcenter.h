#pragma once

#include <QList>
#include <QMultiMap>
#include <QObject>
#include <QPointer>
#include <QString>

#include <deque>
#include <memory>

namespace WaveMonitor {

/// What the parts of a viewer tell one another. Events "before" are delivered at once, so that a
/// receiver sees the old state; events "after" are queued, so that they arrive when the change is
/// complete. Numbers not named here are reserved.
enum NotificationType : int {
    EvLog = 1, ///< not delivered: its text goes to the debug log
    EvBeforeZoom = 2,
    EvAfterZoom = 3, ///< sender's property zoomRate
    EvFormatChanged = 5,
    EvBeforeMarkerCreate = 6,
    EvAfterMarkerCreate = 7, ///< sender's property timeMarkers, as in 9 and 11
    EvBeforeMarkerChange = 8,
    EvAfterMarkerChange = 9,
    EvBeforeMarkerRemove = 10,
    EvAfterMarkerRemove = 11,
    EvViewScrolled = 12, ///< sender's property horizontalScrollBarValue
    EvCollapsed = 13,
    EvExpanded = 14,
    EvRemoveAllItems = 15,
    EvAddAllItems = 16,
    EvRepaintItems = 18,     ///< selection or member order changed
    EvStructureChanged = 20, ///< rows were added, removed, grouped, reversed or reset
    EvColorChanged = 22
};

/// One event. The raiser makes it on the heap and hands it to the centre, which owns it from then
/// on. Data travels through the sender's properties, so a handler sees the sender as it is now.
struct Notification
{
    int type = 0;
    QPointer<QObject> sender; ///< null once the sender is gone while the event was queued
    QString text;             ///< of EvLog alone
};

/// The one event hub of all viewers in the program; see Localized for how they stay apart.
/// Receivers have an invokable handleEvents(Notification *) and unsubscribe in their destructors.
/// GUI thread.
class NotificationCenter final : public QObject
{
    Q_OBJECT

public:
    static NotificationCenter *instance();

    /// \a receiver is borrowed until unsubscribe.
    void subscribe(QObject *receiver, const QList<int> &types);
    void unsubscribe(QObject *receiver);

    /// Delivers to all subscribers of the event's type but \a sender, now or from the event loop in
    /// the order of posting. Takes ownership of \a e.
    void postSync(Notification *e, QObject *sender);
    void postAsync(Notification *e, QObject *sender);

    Q_INVOKABLE void deleteEventLater(Notification *e); ///< frees the record

private:
    NotificationCenter();
    bool log(const Notification &e) const;

    QMultiMap<int, QObject *> m_subscribers;
    std::deque<std::unique_ptr<Notification>> m_queued; ///< in the order of posting
};

/// The start of every handler: is the event from a living sender of that domain?
bool concerns(const Notification &e, quint64 domain);

/// Raises an event of \a sender, as every part of a viewer does.
void raiseNow(QObject *sender, NotificationType type);
void raiseLater(QObject *sender, NotificationType type);

} // namespace WaveMonitor
