#pragma once

#include <link/jtagsession.h>
#include <project/keostandardanalyzerproject.h>
#include <project/waitingtip.h>
#include <shell/serverlauncher.h>
#include <support/testdesign.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <utility>

/// Closes every message box that comes up and writes it down as "title|text". A test that hangs in
/// a box would tell nothing.
class BoxWatcher : public QObject
{
    Q_OBJECT

public:
    BoxWatcher()
    {
        connect(&m_timer, &QTimer::timeout, this, &BoxWatcher::look);
        m_timer.start(10);
    }

    QStringList seen;
    /// Runs while the next box is open, before it is closed.
    std::function<void()> whileOpen;
    /// Leaves boxes open, so that others may come up over them.
    bool isPassive = false;
    int openBoxes() const { return int(boxes().size()); }

private:
    static QList<QMessageBox *> boxes()
    {
        QList<QMessageBox *> found;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *box = qobject_cast<QMessageBox *>(widget);
            if (box && box->isVisible())
                found.append(box);
        }
        return found;
    }

    void look()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || isPassive)
            return;
        const QPointer<QMessageBox> guard(box);
        seen.append(box->windowTitle() + u'|' + box->text());
        if (const auto task = std::exchange(whileOpen, {}))
            task();
        if (guard)
            QTest::keyClick(guard, Qt::Key_Return);
    }

    QTimer m_timer;
};

/// What the main window is to a project: tab widget, tool bar, Open action.
struct ProjectWindow
{
    ProjectWindow()
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
        const auto add = [&](char letter, bool isOn) {
            letters += QLatin1Char(isOn ? letter : '-');
        };
        add('O', openAction->isEnabled());
        add('S', isEnabled("startAction"));
        add('A', isEnabled("autoAction"));
        add('X', isEnabled("stopAction"));
        add('F', isEnabled("forceTriggerAction"));
        add('W', isEnabled("saveAction"));
        add('E', isEnabled("exportAction"));
        add('P', tree()->isEnabled());
        return letters;
    }
    /// The tip that shows, or null.
    static KEO::WaitingTip *tip()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *tip = qobject_cast<KEO::WaitingTip *>(widget);
            if (tip && tip->isVisible())
                return tip;
        }
        return nullptr;
    }

    std::unique_ptr<QMainWindow> window;
    QPointer<QToolBar> toolBar;
    QPointer<QTabWidget> tabs;
    QPointer<QAction> openAction;
    QPointer<KEO::KeoStandardAnalyzerProject> project; // child of the window
};

/// A design with the files of it, and the simulated server that has it on its first cable.
struct Bench
{
    explicit Bench(const TestDesign &board) : design(board)
    {
        design.write(directory.path());
        qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());
        const auto started = KEO::launchServers(servers, QStringLiteral(KEO_BURNER_DIR),
                                                KEO::serverTable().mid(0, 1));
        KEO::JtagSession::instance()->connectServers(started);
    }
    ~Bench()
    {
        KEO::JtagSession::instance()->disconnectAll();
        KEO::killServers(servers);
    }

    QString file() const { return directory.filePath("design." + design.extension); }

    TestDesign design;
    QTemporaryDir directory;
    KEO::ServerProcesses servers;
};
