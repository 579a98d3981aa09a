#pragma once

#include <shell/analyzer.h>
#include <support/bench.h>
#include <support/widgettest.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QTabWidget>
#include <QToolBar>

/// A user before the screen: the real main window with its project, and a bench. Answers every
/// message box with Yes or OK unless told otherwise.
struct Desktop : Bench
{
    explicit Desktop(const TestDesign &board) : Bench(board)
    {
        window->resize(1200, 800);
        window->show();
    }

    void open() { window->openFile(file(), {}, design.device, {}); }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = window->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    QTabWidget *tabs() const { return find<QTabWidget>("tabWidget"); }
    WaveMonitor::WaveMonitorWidget *wave(int tab) const
    {
        return qobject_cast<WaveMonitor::WaveMonitorWidget *>(tabs()->widget(tab));
    }
    QAction *tool(const QString &text) const
    {
        for (QAction *action : find<QToolBar>("toolBar")->actions()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }
    void click(const QString &text) const
    {
        QWidget *button = find<QToolBar>("toolBar")->widgetForAction(tool(text));
        QTest::mouseClick(button, Qt::LeftButton);
    }
    /// After a box the offscreen window system activates nothing; a real one gives the focus back.
    void activate() const
    {
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        activate();
        QTest::keyClick(window.get(), key, modifiers);
    }
    bool isBusy() const
    {
        const QAction *stop = tool(QStringLiteral("Stop"));
        return stop && stop->isEnabled();
    }
    /// No run, and no tip left behind.
    bool isIdle() const { return !isBusy() && !waitingTip(); }
    void capture() const
    {
        press(Qt::Key_F1);
        QTRY_VERIFY_WITH_TIMEOUT(!isBusy(), kCaptureTime);
    }

    BoxWatcher boxes{QMessageBox::Yes};
    std::unique_ptr<KEO::Analyzer> window = std::make_unique<KEO::Analyzer>();
};
