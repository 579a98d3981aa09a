#pragma once

#include <wave/notificationcenter.h>
#include <wave/signaltreemodel.h>

#include <QBitArray>
#include <QCoreApplication>
#include <QModelIndexList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <utility>

// Rows as text, such as "a B(b c) d": signals, and buses with their members.

inline constexpr int kRowSamples = 100;

/// The samples of the signal with that id: sample k is bit \a id of the number k.
inline QBitArray countingSamples(int id, int samples = kRowSamples)
{
    QBitArray data(samples);
    for (int k = 0; k < samples; ++k)
        data.setBit(k, (k >> id & 1) != 0);
    return data;
}

/// Adds rows to a model; signals get ids from 0 in the order of the text, and
/// one called "long" twice the samples.
inline void addRows(WaveMonitor::SignalTreeModel &model, QString rows)
{
    int id = int(model.signalMap().size());
    const auto element = [&id](const QString &name) {
        const int own = id++;
        const int samples = name == QLatin1String("long") ? 2 * kRowSamples : kRowSamples;
        return WaveMonitor::SignalElement{own, name, {}, countingSamples(own, samples)};
    };
    rows.replace(QLatin1Char(')'), QLatin1String(" )"));
    QStringList words = rows.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    while (!words.isEmpty()) {
        const QString word = words.takeFirst();
        if (!word.contains(QLatin1Char('('))) {
            model.addSignal(element(word));
            continue;
        }
        QList<WaveMonitor::SignalElement> members;
        for (QString name = word.section(QLatin1Char('('), 1); name != QLatin1String(")");
             name = words.takeFirst()) {
            if (!name.isEmpty())
                members.append(element(name));
        }
        WaveMonitor::BusElement bus{word.section(QLatin1Char('('), 0, 0), {}, {}};
        for (WaveMonitor::SignalElement &member : members)
            bus.signals.append(&member);
        model.addBus(bus);
    }
}

/// The rows of a model, as their Name column shows them.
inline QString rowsOf(const QAbstractItemModel &model, const QModelIndex &parent = {})
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const auto *node = static_cast<const WaveMonitor::LayoutNode *>(index.internalPointer());
        const QString name = index.data().toString();
        rows.append(node->type == WaveMonitor::LayoutNode::Bus
                        ? name + QLatin1Char('(') + rowsOf(model, index) + QLatin1Char(')')
                        : name);
    }
    return rows.join(QLatin1Char(' '));
}

/// The first row of that name.
inline QModelIndex rowNamed(const QAbstractItemModel &model, const QString &name,
                            const QModelIndex &parent = {})
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (index.data().toString() == name)
            return index;
        const QModelIndex inside = rowNamed(model, name, index);
        if (inside.isValid())
            return inside;
    }
    return {};
}

/// The rows of a text such as "a c", in its order.
inline QModelIndexList rowsNamed(const QAbstractItemModel &model, const QString &names)
{
    QModelIndexList rows;
    for (const QString &name : names.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        rows.append(rowNamed(model, name));
    return rows;
}

inline QString namesOf(const QModelIndexList &rows)
{
    QStringList names;
    for (const QModelIndex &row : rows)
        names.append(row.data().toString());
    return names.join(QLatin1Char(' '));
}

namespace WaveMonitor {

/// Counts what the tree tells the rest of its viewer.
class Listener final : public QObject
{
    Q_OBJECT

public:
    explicit Listener(quint64 domain) : m_domain(domain)
    {
        NotificationCenter::instance()->subscribe(this, {EvFormatChanged, EvCollapsed, EvExpanded,
                                                         EvRepaintItems, EvStructureChanged,
                                                         EvColorChanged});
    }
    ~Listener() override { NotificationCenter::instance()->unsubscribe(this); }

    Q_INVOKABLE void handleEvents(Notification *e)
    {
        if (concerns(*e, m_domain))
            m_heard.append(e->type);
    }

    /// The numbers heard since the last call, in order.
    QList<int> take()
    {
        QCoreApplication::processEvents();
        return std::exchange(m_heard, {});
    }

private:
    quint64 m_domain;
    QList<int> m_heard;
};

} // namespace WaveMonitor
