#include "analyzer.h"

#include "debugdock.h"
#include "emptyhint.h"
#include "examplecopy.h"
#include "recentfiles.h"
#include "startupoptions.h"

#include <design/recoverystore.h>
#include <image/images.h>
#include <link/jtagsession.h>
#include <widgets/messagebox.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QKeySequence>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>

#include <optional>
#include <tuple>

namespace KEO {

namespace {

// In device-independent pixels.
constexpr int kIconSize = 24;
constexpr QSize kRestoredSize(1280, 800); // when the user takes the maximized window back

std::unique_ptr<QAction> makeOpenAction(QWidget *window)
{
    auto action = std::make_unique<QAction>(Analyzer::tr("Open..."), window);
    action->setObjectName(QStringLiteral("openAction"));
    action->setToolTip(Analyzer::tr("Open..."));
    action->setShortcut(QKeySequence::Open);
    action->setIcon(QIcon(QStringLiteral(":/keo/image/folder.png")));
    return action;
}

QString fileFilter()
{
    const QString projects = QStringLiteral(".analyzer_prj");
    return QStringList{Analyzer::tr("Supported Files (*%1 *.keo *.zeo)").arg(projects),
                       Analyzer::tr("KEO Analyzer Project File (*%1)").arg(projects),
                       Analyzer::tr("TARNO Signal Scope Config File (*.keo *.zeo)")}
        .join(QStringLiteral(";;"));
}

/// The one file of \a data that the window can open; empty for anything else.
QString fileIn(const QMimeData &data)
{
    const QList<QUrl> urls = data.urls();
    const QString path = urls.size() == 1 ? urls.first().toLocalFile() : QString();
    for (const char *suffix : {".analyzer_prj", ".keo", ".zeo"}) {
        if (path.endsWith(QLatin1String(suffix)) && QFileInfo(path).isFile())
            return path;
    }
    return {};
}

} // namespace

/// What the window is made of. The manager is made first and ends last; the widgets are the
/// window's children.
struct AnalyzerPrivate
{
    AnalyzerPrivate(QWidget *theWindow, const ProjectFactories &factories)
        : projectManager(std::make_unique<ProjectManager>(theWindow, factories)),
          openAction(makeOpenAction(theWindow).release()),
          toolBar(new QToolBar(Analyzer::tr("Tool Bar"), theWindow)),
          tabWidget(new QTabWidget(theWindow)),
          window(theWindow)
    {
        toolBar->setObjectName(QStringLiteral("toolBar"));
        toolBar->setIconSize({kIconSize, kIconSize});
        toolBar->addAction(openAction);
        toolBar->addSeparator();
        tabWidget->setObjectName(QStringLiteral("tabWidget"));
    }

    bool open(const QString &file,
              ProjectManager::Settings settings = ProjectManager::Settings::Forget) const
    {
        projectManager->tabWidgetGetter = [this] { return tabWidget; };
        projectManager->toolBarGetter = [this] { return toolBar; };
        projectManager->openActionGetter = [this] { return openAction; };
        return projectManager->openFile(window, family, device, fsFile, file, settings);
    }

    std::unique_ptr<ProjectManager> projectManager;
    QAction *openAction;
    QToolBar *toolBar;
    QTabWidget *tabWidget;
    QString family; // the three of the current file
    QString device;
    QString fsFile;
    QWidget *window;
    EmptyHint *hint = nullptr;
    DebugDock *debugDock = nullptr; // null without debug messages
};

Analyzer::Analyzer(QWidget *parent, const ProjectFactories &factories)
    : QMainWindow(parent), m_d(std::make_unique<AnalyzerPrivate>(this, factories))
{
    WaveMonitor::NotificationCenter::instance()->subscribe(
        this, {WaveMonitor::EvFormatChanged, WaveMonitor::EvColorChanged});
    setContextMenuPolicy(Qt::NoContextMenu);
    setAcceptDrops(true);
    showFile({});
    setWindowIcon(programIcon());
    setStatusBar(new QStatusBar(this));
    connect(m_d->openAction, &QAction::triggered, this, &Analyzer::onOpen);
    addToolBar(m_d->toolBar);
    setCentralWidget(m_d->tabWidget);
    auto *const hint = m_d->hint = new EmptyHint(m_d->tabWidget);
    connect(m_d->projectManager.get(), &ProjectManager::fileNamed, this, &Analyzer::showFile);
    connect(m_d->projectManager.get(), &ProjectManager::fileNamed, hint,
            [hint] { hint->setRefused({}, {}); });
    connect(hint, &EmptyHint::openRequested, this, &Analyzer::openChosen);
    connect(m_d->projectManager.get(), &ProjectManager::fileRefused, hint, &EmptyHint::setRefused);
    resize(kRestoredSize.boundedTo(screen()->availableSize()));
    if (wantsDebugMessages(QCoreApplication::arguments()))
        buildDebugDock();
}

Analyzer::~Analyzer()
{
    WaveMonitor::NotificationCenter::instance()->unsubscribe(this);
}

void Analyzer::openFile(const QString &file, const QString &family, const QString &device,
                        const QString &fsFile)
{
    const QPointer<Analyzer> self(this); // the user may be asked
    const auto before = std::tuple(m_d->family, m_d->device, m_d->fsFile);
    m_d->family = family;
    m_d->device = device;
    m_d->fsFile = fsFile;
    if (!m_d->open(file) && self)
        std::tie(m_d->family, m_d->device, m_d->fsFile) = before;
}

void Analyzer::tell(const QString &text)
{
    m_d->projectManager->tell(text);
}

void Analyzer::offerExample(const ExampleDesign &example)
{
    m_d->hint->offerExample(exampleFolder());
    connect(m_d->hint, &EmptyHint::exampleRequested, this, [this, example] {
        const Result<QString> copy = copyOfExample(example.description);
        if (!copy) {
            m_d->hint->setRefused(example.description, copy.error().message);
            return;
        }
        m_startDir = *copy;
        openFile(*copy, example.family, example.device, {});
    });
}

void Analyzer::reopen(const QString &file)
{
    m_d->open(file);
}

void Analyzer::reopenAndKeep(const QString &file)
{
    m_d->open(file, ProjectManager::Settings::Keep);
}

void Analyzer::keepDevice(const QString &family, const QString &device)
{
    m_d->family = family;
    m_d->device = device;
}

bool Analyzer::closeCurrentProject()
{
    return m_d->projectManager->closeCurrent(this, {});
}

void Analyzer::handleEvents(WaveMonitor::Notification *)
{
}

void Analyzer::onOpen()
{
    const QPointer<Analyzer> self(this);
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open Project..."), m_startDir, fileFilter());
    if (!self || path.isEmpty())
        return;
    if (QFileInfo::exists(path))
        openChosen(path);
    else
        m_startDir = path;
}

/// The device of the command line does not count here; that of a capture from the store does.
void Analyzer::openChosen(const QString &path)
{
    const std::optional<Recovery> recovery = RecoveryStore().entryOf(path);
    if (!recovery)
        m_startDir = path; // nobody looks for a file of his own in the store
    openFile(path, QString(), recovery ? recovery->deviceModel : QString(), QString());
}

void Analyzer::dragEnterEvent(QDragEnterEvent *event)
{
    if (m_d->openAction->isEnabled() && !fileIn(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

/// The program that the file comes from waits until the drop is over, so a box must not hold it up.
void Analyzer::dropEvent(QDropEvent *event)
{
    const QString path = fileIn(*event->mimeData());
    if (path.isEmpty() || !m_d->openAction->isEnabled())
        return;
    event->acceptProposedAction();
    QMetaObject::invokeMethod(
        this,
        [this, path] {
            if (!m_d->openAction->isEnabled() || QApplication::activeModalWidget())
                return;
            openChosen(path);
        },
        Qt::QueuedConnection);
}

void Analyzer::closeEvent(QCloseEvent *event)
{
    const QPointer<Analyzer> self(this); // the question waits, and the window may go meanwhile
    // Samples that are being read inside the question's event loop would hold the answer up.
    const auto stopOnYes = [self](QMessageBox *box) {
        QObject::connect(box, &QMessageBox::finished, self, [self](int answer) {
            if (answer == QMessageBox::Yes)
                self->m_d->projectManager->stopReading();
        });
    };
    const auto askStop = [this, stopOnYes] {
        return showBox(QMessageBox::Question, this, tr("Exit"),
                       tr("Task is still running, do you want to exit?"),
                       QMessageBox::Yes | QMessageBox::No, QMessageBox::No,
                       stopOnYes) == QMessageBox::Yes;
    };
    if (!m_d->projectManager->closeCurrent(this, askStop) || !self) {
        event->ignore();
        return;
    }
    JtagSession::instance()->disconnectAll();
    if (m_d->debugDock)
        m_d->debugDock->stopListening();
    event->accept();
}

void Analyzer::buildDebugDock()
{
    m_d->debugDock = new DebugDock(this);
    addDockWidget(Qt::RightDockWidgetArea, m_d->debugDock);
    m_d->debugDock->listen();
    m_d->debugDock->setPreview([this] { return m_d->projectManager->startPreview(); });

    // The way back for a dock that was closed.
    QAction *toggle = m_d->debugDock->toggleViewAction();
    toggle->setShortcut(Qt::Key_F12);
    toggle->setToolTip(tr("Show or hide the debug messages (%1)")
                           .arg(toggle->shortcut().toString(QKeySequence::NativeText)));
    addAction(toggle);
    auto *button = new QToolButton;
    button->setObjectName(QStringLiteral("debugToggle"));
    button->setDefaultAction(toggle);
    button->setAutoRaise(true);
    statusBar()->addPermanentWidget(button);
}

/// With the program's name in any case, as window lists show it.
void Analyzer::showFile(const QString &path, const QString &remark)
{
    if (!path.isEmpty() && remark.isEmpty())
        RecentFiles().add(path);
    const QString program = tr("Tarno Signal Scope");
    const QString mark = QStringLiteral("[*]"); // stands for itself only when doubled
    const QString name = QFileInfo(path).fileName().replace(mark, mark + mark);
    const QString shown = remark.isEmpty() ? name : tr("%1 (%2)").arg(name, remark);
    setWindowTitle(name.isEmpty() ? program : tr("%1 – %2").arg(shown, program));
}

} // namespace KEO
