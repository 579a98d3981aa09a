#pragma once

#include <project/keostandardanalyzerproject.h>
#include <support/bench.h>
#include <support/widgettest.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QMainWindow>
#include <QPointer>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>

#include <initializer_list>
#include <memory>
#include <utility>

/// What the main window is to a project: tab widget, tool bar, Open action. Closes the boxes that
/// come up.
struct ProjectWindow
{
    /// With the file open, if there is one.
    explicit ProjectWindow(const QString &path = {})
        : window(std::make_unique<QMainWindow>()),
          toolBar(new QToolBar),
          tabs(new QTabWidget),
          openAction(new QAction(QStringLiteral("Open..."), window.get())),
          project(new KEO::KeoStandardAnalyzerProject(window.get()))
    {
        window->setWindowTitle(QStringLiteral("Window"));
        toolBar->addAction(openAction);
        window->addToolBar(toolBar);
        window->setCentralWidget(tabs);
        window->resize(1200, 700);
        window->show();
        if (!path.isEmpty() && !open(path))
            qFatal("cannot open %s", qPrintable(path));
    }

    bool open(const QString &path, const QString &device = {})
    {
        project->tabWidgetGetter = [this] { return tabs.data(); };
        project->toolBarGetter = [this] { return toolBar.data(); };
        project->openActionGetter = [this] { return openAction.data(); };
        project->setupProject(window.get());
        if (!project->openFile(path)) {
            project->closeProject(window.get(), {});
            return false;
        }
        project->setDevice({}, device, {});
        return true;
    }

    /// Presses a key in the window. After a box the offscreen window system activates nothing.
    void press(Qt::Key key) const
    {
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTest::keyClick(window.get(), key);
    }
    void start(Qt::Key key = Qt::Key_F1) const
    {
        press(key);
        QVERIFY(project->isBusy());
    }
    void capture() const
    {
        start();
        QTRY_VERIFY_WITH_TIMEOUT(!project->isBusy(), kCaptureTime);
    }
    /// No run, no tip, and a core that can start again.
    [[nodiscard]] bool isReady() const
    {
        const QString letters = enabled();
        return !project->isBusy() && !tip() && letters.startsWith(QLatin1String("OSA--")) &&
               letters.endsWith(u'P');
    }

    QAction *action(const char *name) const
    {
        return project->findChild<QAction *>(QLatin1String(name));
    }
    bool isEnabled(const char *name) const { return action(name)->isEnabled(); }
    QTreeWidget *tree() const { return tabs->findChild<QTreeWidget *>(QStringLiteral("coreTree")); }
    WaveMonitor::WaveMonitorWidget *wave(int tab) const
    {
        return qobject_cast<WaveMonitor::WaveMonitorWidget *>(tabs->widget(tab));
    }
    /// Titles of all tabs.
    QStringList titles() const
    {
        QStringList all;
        for (int i = 0; i < tabs->count(); ++i)
            all.append(tabs->tabText(i));
        return all;
    }
    /// Enabled ones of these, in this order: Open, Start, Auto, Stop, Force Trigger, Save, Export,
    /// and the page.
    QString enabled() const
    {
        QString letters;
        const std::initializer_list<std::pair<char, bool>> controls{
            {'O', openAction->isEnabled()},         {'S', isEnabled("startAction")},
            {'A', isEnabled("autoAction")},         {'X', isEnabled("stopAction")},
            {'F', isEnabled("forceTriggerAction")}, {'W', isEnabled("saveAction")},
            {'E', isEnabled("exportAction")},       {'P', tree()->isEnabled()}};
        for (const auto &[letter, isOn] : controls)
            letters += QLatin1Char(isOn ? letter : '-');
        return letters;
    }
    static KEO::WaitingTip *tip() { return waitingTip(); }

    BoxWatcher boxes;
    std::unique_ptr<QMainWindow> window;
    QPointer<QToolBar> toolBar;
    QPointer<QTabWidget> tabs;
    QPointer<QAction> openAction;
    QPointer<KEO::KeoStandardAnalyzerProject> project; // child of the window
};
