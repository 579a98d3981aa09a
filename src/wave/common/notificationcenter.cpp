#include "notificationcenter.h"

#include "timesliderdata.h"

#include <wave_data/dataformat.h>

#include <QMetaObject>
#include <QVariant>
#include <QtDebug>

#include <algorithm>
#include <utility>

namespace WaveMonitor {

NotificationCenter *NotificationCenter::instance()
{
    static NotificationCenter centre;
    return &centre;
}

NotificationCenter::NotificationCenter()
{
    // Queued calls and properties look these names up, so they must be known before the first
    // event.
    qRegisterMetaType<DataFormat::Type>("WaveMonitor::DataFormat::Type");
    qRegisterMetaType<DataFormat::Type>("DataFormat::Type");
    qRegisterMetaType<QList<TimeSliderData *>>("QList<WaveMonitor::TimeSliderData*>");
    qRegisterMetaType<QList<TimeSliderData *>>("QList<TimeSliderData*>");
    qRegisterMetaType<Notification *>("Notification*");
}

void NotificationCenter::subscribe(QObject *receiver, const QList<int> &types)
{
    for (const int type : types)
        m_subscribers.insert(type, receiver);
}

void NotificationCenter::unsubscribe(QObject *receiver)
{
    for (auto entry = m_subscribers.begin(); entry != m_subscribers.end();) {
        if (entry.value() == receiver)
            entry = m_subscribers.erase(entry);
        else
            ++entry;
    }
}

bool NotificationCenter::log(const Notification &e) const
{
    if (e.type != EvLog)
        return false;
    qDebug().noquote() << e.text;
    return true;
}

void NotificationCenter::postSync(Notification *e, QObject *sender)
{
    const std::unique_ptr<Notification> owned(e);
    if (log(*e))
        return;
    // A handler may subscribe, unsubscribe or delete receivers: guarded copies survive that.
    QList<QPointer<QObject>> receivers;
    for (QObject *receiver : m_subscribers.values(e->type)) {
        if (receiver != sender)
            receivers.append(receiver);
    }
    for (const QPointer<QObject> &receiver : receivers) {
        if (receiver && m_subscribers.contains(e->type, receiver))
            QMetaObject::invokeMethod(receiver, "handleEvents", Qt::DirectConnection,
                                      Q_ARG(Notification *, e));
    }
}

void NotificationCenter::postAsync(Notification *e, QObject *sender)
{
    std::unique_ptr<Notification> owned(e);
    if (log(*e))
        return;
    m_queued.push_back(std::move(owned));
    for (QObject *receiver : m_subscribers.values(e->type)) {
        if (receiver != sender)
            QMetaObject::invokeMethod(receiver, "handleEvents", Qt::QueuedConnection,
                                      Q_ARG(Notification *, e));
    }
    QMetaObject::invokeMethod(this, "deleteEventLater", Qt::QueuedConnection,
                              Q_ARG(Notification *, e));
}

void NotificationCenter::deleteEventLater(Notification *e)
{
    // Events go in the order of posting, so this one stands in front.
    const auto found = std::find_if(m_queued.begin(), m_queued.end(),
                                    [e](const auto &queued) { return queued.get() == e; });
    if (found != m_queued.end())
        m_queued.erase(found);
}

bool concerns(const Notification &e, quint64 domain)
{
    return e.sender && e.sender->property("domain").toULongLong() == domain;
}

void raiseNow(QObject *sender, NotificationType type)
{
    NotificationCenter::instance()->postSync(new Notification{type, sender, {}}, sender);
}

void raiseLater(QObject *sender, NotificationType type)
{
    NotificationCenter::instance()->postAsync(new Notification{type, sender, {}}, sender);
}

} // namespace WaveMonitor
