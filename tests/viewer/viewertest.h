#pragma once

#include <support/testmain.h>
#include <wave/notificationcenter.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QRegularExpression>
#include <QStringList>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>
#include <utility>

/// Base of the viewer's tests. Fails on warnings, but for what the toolkit says when there is no
/// window system and when a view has no use for a click.
class ViewerTest : public QuietTest
{
    Q_OBJECT

protected:
    virtual void prepare() {} ///< runs before each test function

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(
            QStringLiteral("^(?!This plugin does not support|Mouse event .* not accepted by)")));
        prepare();
    }
};

/// Writes down what a part of a viewer tells the rest.
class Listener final : public QObject
{
    Q_OBJECT

    using Notification = WaveMonitor::Notification;

public:
    /// \a look sees the sender of each event.
    Listener(const QList<int> &types, std::function<void(const QObject &)> look)
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

/// Stands in for another part of a viewer: a sender with the properties that receivers read.
inline std::unique_ptr<QObject> newSender(quint64 domain, qreal zoom = 1.0, int scroll = 0)
{
    auto sender = std::make_unique<QObject>();
    sender->setProperty("domain", domain);
    sender->setProperty("zoomRate", zoom);
    sender->setProperty("horizontalScrollBarValue", scroll);
    return sender;
}

/// Opens the context menu of a view's \a viewport at \a position, as a right click does, and gives
/// the texts of its entries: none when no menu came up. Chooses the entry \a choice by the
/// keyboard, or leaves the menu.
inline QStringList driveContextMenu(QWidget *viewport, const QPoint &position,
                                    const QString &choice = {})
{
    QStringList texts;
    QTimer driver;
    driver.setSingleShot(true);
    QObject::connect(&driver, &QTimer::timeout, &driver, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        // The offscreen window system makes the menu the active window, which no real one does, and
        // an editor that the choice opens would lose the focus with the menu's end.
        viewport->window()->activateWindow();
        QCoreApplication::processEvents();
        const QList<QAction *> actions = menu->actions();
        for (QAction *action : actions) {
            texts.append(action->text());
            if (action->text() == choice)
                menu->setActiveAction(action);
        }
        QTest::keyClick(menu, choice.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
    });
    driver.start(0);
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, viewport->mapToGlobal(position));
    QApplication::sendEvent(viewport, &event);
    QCoreApplication::processEvents();
    return texts;
}
