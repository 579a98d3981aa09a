#pragma once

#include <link/jtagsession.h>
#include <project/waitingtip.h>
#include <shell/analyzer.h>
#include <shell/serverlauncher.h>
#include <support/testdesign.h>
#include <viewer/viewertest.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolBar>

/// A user before the screen: the real main window with its project, a design, and the server that
/// has it on the first cable. Answers every message box with Yes or OK unless told otherwise, and
/// keeps what it said as "title|text".
class Desktop final : public QObject
{
    Q_OBJECT

public:
    static constexpr int kCaptureTime = 20000; ///< ms, many times what a capture here takes

    explicit Desktop(const TestDesign &board) : design(board)
    {
        design.write(directory.path());
        qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());
        keepLog();
        connectServer();
        window = std::make_unique<KEO::Analyzer>();
        window->resize(1200, 800);
        window->show();
        connect(&m_timer, &QTimer::timeout, this, &Desktop::answerBox);
        m_timer.start(5);
    }
    ~Desktop() override
    {
        window.reset();
        KEO::JtagSession::instance()->disconnectAll();
        KEO::killServers(servers);
    }

    QString file() const { return directory.filePath("design." + design.extension); }
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
        const QList<QAction *> actions = find<QToolBar>("toolBar")->actions();
        const auto found = std::find_if(actions.begin(), actions.end(),
                                        [&](const QAction *a) { return a->text() == text; });
        return found == actions.end() ? nullptr : *found;
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
    void press(Qt::Key key) const
    {
        activate();
        QTest::keyClick(window.get(), key);
    }
    bool isBusy() const
    {
        const QAction *stop = tool(QStringLiteral("Stop"));
        return stop && stop->isEnabled();
    }
    static KEO::WaitingTip *tip()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *tip = qobject_cast<KEO::WaitingTip *>(widget);
            if (tip && tip->isVisible())
                return tip;
        }
        return nullptr;
    }
    /// How many requests of a kind the server has taken.
    qsizetype requests(const QByteArray &kind) const
    {
        QFile log(directory.filePath("packets.log"));
        if (!log.open(QIODevice::ReadOnly))
            return 0;
        const QList<QByteArray> lines = log.readAll().split('\n');
        return std::count_if(lines.begin(), lines.end(), [&](const QByteArray &line) {
            return line.contains(" > ") && line.contains(kind);
        });
    }

    TestDesign design;
    QTemporaryDir directory;
    KEO::ServerProcesses servers;
    std::unique_ptr<KEO::Analyzer> window;
    QStringList boxes;
    QMessageBox::StandardButton answer = QMessageBox::Yes; ///< to questions
    std::function<void()> whileBoxIsOpen;                  ///< runs once

private:
    /// On a busy machine a server takes longer to start than the program waits for it.
    void connectServer()
    {
        auto rows = KEO::launchServers(servers, QStringLiteral(KEO_BURNER_DIR),
                                       KEO::serverTable().mid(0, 1));
        for (int attempt = 0; attempt < 10 && !rows.isEmpty(); ++attempt)
            rows = KEO::JtagSession::instance()->connectServers(rows);
        if (!rows.isEmpty())
            qFatal("the server does not answer");
    }
    void keepLog() const
    {
        QFile board(directory.filePath("board.json"));
        if (!board.open(QIODevice::ReadWrite))
            qFatal("no board file");
        QByteArray text = board.readAll();
        text.replace("\"cables\"", "\"log\": \"packets.log\", \"cables\"");
        board.seek(0);
        board.write(text);
    }
    void answerBox()
    {
        const QPointer<QMessageBox> box =
            qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        boxes.append(box->windowTitle() + u'|' + box->text());
        if (const auto task = std::exchange(whileBoxIsOpen, {}))
            task();
        if (!box)
            return;
        QAbstractButton *button = box->button(answer);
        QTest::keyClick(button ? button : box->button(QMessageBox::Ok), Qt::Key_Space);
    }

    QTimer m_timer;
};
