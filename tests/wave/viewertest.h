#pragma once

#include <support/widgettest.h>
#include <wave/common/notificationcenter.h>
#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>
#include <wave/wavemonitorwidget.h>

#include <QAbstractItemModelTester>
#include <QGraphicsItem>
#include <QGraphicsScene>

#include <memory>
#include <optional>

/// Writes down what a part of a viewer tells the rest.
class Listener final : public QObject
{
    Q_OBJECT

    using Notification = WaveMonitor::Notification;

public:
    /// \a look, if any, sees the sender of each event.
    explicit Listener(const QList<int> &types, std::function<void(const QObject &)> look = {})
        : m_look(std::move(look))
    {
        WaveMonitor::NotificationCenter::instance()->subscribe(this, types);
    }
    ~Listener() override { WaveMonitor::NotificationCenter::instance()->unsubscribe(this); }

    Q_INVOKABLE void handleEvents(Notification *e)
    {
        if (!e->sender)
            return;
        m_types.append(e->type);
        if (m_look)
            m_look(*e->sender);
    }
    /// Numbers of the events since the last call.
    QList<int> take()
    {
        QCoreApplication::processEvents();
        return std::exchange(m_types, {});
    }

private:
    QList<int> m_types;
    std::function<void(const QObject &)> m_look;
};

// Rows as text, such as "a B(b c) d": signals, and buses with their members.

inline constexpr int kRowSamples = 100;

/// The samples of the signal with that id: sample k is a bit of the number k.
inline QBitArray countingSamples(int id, int samples = kRowSamples)
{
    QBitArray data(samples);
    for (int k = 0; k < samples; ++k)
        data.setBit(k, (k >> id % 8 & 1) != 0);
    return data;
}

/// Adds rows to a model or a viewer; signals get ids in the order of the text, and one called
/// "long" twice the samples.
template <typename Target>
void addRows(Target &target, const QString &rows, int samples = kRowSamples)
{
    int id = int(target.signalMap().size());
    std::optional<QString> bus;
    QList<WaveMonitor::SignalElement> members;
    for (QString word : rows.split(u' ', Qt::SkipEmptyParts)) {
        if (word.contains(u'(')) {
            bus = word.section(u'(', 0, 0);
            word = word.section(u'(', 1);
        }
        const bool ends = word.endsWith(u')');
        word.remove(u')');
        const int length = word == QLatin1String("long") ? 2 * samples : samples;
        const WaveMonitor::SignalElement element{id, word, {}, countingSamples(id, length)};
        id += word.isEmpty() ? 0 : 1;
        if (!bus)
            target.addSignal(element);
        else if (!word.isEmpty())
            members.append(element);
        if (ends) {
            WaveMonitor::BusElement record{*std::exchange(bus, {}), {}, {}};
            for (WaveMonitor::SignalElement &member : members)
                record.signals.append(&member);
            target.addBus(record);
            members.clear();
        }
    }
}

/// The rows of a model, as their Name column shows them.
inline QString rowsOf(const QAbstractItemModel &model, const QModelIndex &parent = {})
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const auto *node = static_cast<const WaveMonitor::LayoutNode *>(index.internalPointer());
        rows.append(index.data().toString());
        if (node->type == WaveMonitor::LayoutNode::Bus)
            rows.last() += u'(' + rowsOf(model, index) + u')';
    }
    return rows.join(u' ');
}

inline QString namesOf(const QModelIndexList &rows)
{
    QStringList names;
    for (const QModelIndex &row : rows)
        names.append(row.data().toString());
    return names.join(u' ');
}

/// A model with its tree, all expanded, and a scene that shows its items as the wave view does.
struct Tree
{
    static constexpr quint64 kDomain = 16;

    explicit Tree(const QString &rows)
    {
        model->setDomain(kDomain);
        view->setDomain(kDomain);
        view->setModel(model.get());
        addRows(*model, rows);
        view->expandAll();
        view->resize(320, 400);
        view->show();
        for (QGraphicsItem *item : model->waveItems())
            scene.addItem(item);
        listener.take();
    }
    ~Tree() { listener.take(); } // delivers what is queued, which owns memory

    /// The first row of that name.
    QModelIndex row(const QString &name) const
    {
        const QModelIndexList found = model->match(model->index(0, 0), Qt::DisplayRole, name, 1,
                                                   Qt::MatchExactly | Qt::MatchRecursive);
        return found.value(0);
    }
    /// The rows of a text such as "a c", in its order.
    QModelIndexList rowsNamed(const QString &names) const
    {
        QModelIndexList rows;
        for (const QString &name : names.split(u' ', Qt::SkipEmptyParts))
            rows.append(row(name));
        return rows;
    }
    QString value(const QString &name) const
    {
        return row(name)
            .siblingAtColumn(WaveMonitor::SignalTreeModel::ValueColumn)
            .data()
            .toString();
    }

    QGraphicsScene scene; // outlives the model, whose items it shows
    std::unique_ptr<WaveMonitor::SignalTreeModel> model =
        std::make_unique<WaveMonitor::SignalTreeModel>();
    std::unique_ptr<QAbstractItemModelTester> tester = std::make_unique<QAbstractItemModelTester>(
        model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    std::unique_ptr<WaveMonitor::SignalTreeView> view =
        std::make_unique<WaveMonitor::SignalTreeView>(nullptr, 300);
    Listener listener{{WaveMonitor::EvFormatChanged, WaveMonitor::EvCollapsed,
                       WaveMonitor::EvExpanded, WaveMonitor::EvRepaintItems,
                       WaveMonitor::EvStructureChanged, WaveMonitor::EvColorChanged}};
};

/// The whole viewer with its parts.
struct Viewer
{
    explicit Viewer(const QString &rows = {}, int samples = kRowSamples, quint64 domain = 16,
                    const WaveMonitor::WindowState *saved = nullptr)
        : widget(std::make_unique<WaveMonitor::WaveMonitorWidget>(domain, nullptr, saved)),
          tree(widget->findChild<WaveMonitor::SignalTreeView *>()),
          waves(widget->findChild<WaveMonitor::WaveView *>()),
          ruler(widget->findChild<WaveMonitor::RulerView *>()),
          model(widget->findChild<WaveMonitor::SignalTreeModel *>())
    {
        widget->resize(1320, 450);
        addRows(*widget, rows, samples);
        widget->setTriggerPosition(5);
        widget->show();
        settle();
    }

    static void settle()
    {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }
    void zoomTo(qreal rate) const
    {
        widget->setZoom(rate);
        settle();
    }
    QStringList rulerMenu(int x, int y, const QString &choice = {}) const
    {
        const QStringList texts = driveContextMenu(ruler->viewport(), {x, y}, choice);
        settle();
        return texts;
    }
    void plant(int clock) const
    {
        rulerMenu(ruler->mapFromScene(clock * WaveMonitor::CLOCK_PITCH, 0).x(), 10,
                  QStringLiteral("Create Marker at Clock Period: %1").arg(clock));
    }

    std::unique_ptr<WaveMonitor::WaveMonitorWidget> widget;
    WaveMonitor::SignalTreeView *tree;
    WaveMonitor::WaveView *waves;
    WaveMonitor::RulerView *ruler;
    WaveMonitor::SignalTreeModel *model;
};
