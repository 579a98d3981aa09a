// Random clicks, drags, keys and wheels on the real main window before the simulated board. A seed
// gives the design and the events; what they meet also depends on the time that captures take.
// The sanitizers and assertions of the build are the judges; besides, captures must finish.
//
// monkey SEED [EVENTS]; exit status 0 fine, 1 no capture finished, 2 bad command line.

#include <shell/analyzer.h>
#include <support/bench.h>
#include <support/widgettest.h>
#include <wave/wavemonitorwidget.h>

#include <QAbstractItemView>
#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMenu>
#include <QRandomGenerator>
#include <QTabWidget>
#include <QWheelEvent>

#include <cstdio>

namespace {

constexpr int kPauseEvery = 40;  // events between pauses, in which a capture can finish
constexpr int kPause = 250;      // ms
constexpr int kStopsPassed = 30; // one Stop in so many is pressed

TestDesign designOf(int seed)
{
    TestDesign design;
    design.lite = seed % 4 == 3;
    design.dynamic = seed % 4 == 1;
    design.cores = design.lite ? 1 : 1 + seed % 2;
    design.windows = design.lite ? 1 : 1 + seed % 3;
    design.fires = seed % 5 != 4;
    return design;
}

class Monkey final : public QObject
{
public:
    Monkey(Bench &bench, KEO::Analyzer &window, int seed, int events)
        : m_bench(bench), m_window(window), m_random(quint32(seed)), m_left(events)
    {
        QTimer::singleShot(0, this, &Monkey::tick);
    }

    [[nodiscard]] int runs() const { return m_runs; }
    [[nodiscard]] int captures() const { return m_captures; }

private:
    /// The next tick comes before this one's event, which may open a dialog and wait for its end.
    void tick()
    {
        countRuns();
        if (m_left <= 0) {
            unwind();
            return;
        }
        const bool pauses = m_left-- % kPauseEvery == 0;
        QTimer::singleShot(pauses ? kPause : 0, this, &Monkey::tick);
        act();
    }

    /// Leaves whatever is open, from the top down, until the event loop of main is back.
    void unwind()
    {
        QWidget *top = QApplication::activePopupWidget();
        if (!top)
            top = QApplication::activeModalWidget();
        if (!top) {
            QCoreApplication::exit(0); // to quit would ask about a run
            return;
        }
        QTimer::singleShot(1, this, &Monkey::unwind);
        if (auto *dialog = qobject_cast<QDialog *>(top))
            dialog->reject();
        else
            top->close();
    }

    bool isBusy() const
    {
        for (const QAction *each : toolActions()) {
            if (each->objectName() == QLatin1String("stopAction"))
                return each->isEnabled();
        }
        return false;
    }

    QList<QAction *> toolActions() const
    {
        const auto *bar = m_window.findChild<QWidget *>(QStringLiteral("toolBar"));
        return bar ? bar->actions() : QList<QAction *>();
    }

    void countRuns()
    {
        const bool isBusyNow = isBusy();
        if (std::exchange(m_wasBusy, isBusyNow) && !isBusyNow) {
            ++m_runs;
            if (m_window.findChild<WaveMonitor::WaveMonitorWidget *>())
                ++m_captures;
        }
    }

    int below(int bound) { return bound > 0 ? int(m_random.bounded(bound)) : 0; }
    bool oneIn(int count) { return below(count) == 0; }

    void act()
    {
        QWidget *top = QApplication::activePopupWidget();
        if (!top)
            top = QApplication::activeModalWidget();
        if (auto *files = qobject_cast<QFileDialog *>(top)) {
            choose(*files);
            return;
        }
        // After a popup the offscreen platform gives nobody the focus back, and keys would be lost.
        QWidget *front = top ? top : &m_window;
        if (front->windowType() != Qt::Popup && !front->isActiveWindow())
            front->activateWindow();
        if (!top) {
            if (oneIn(100))
                return reopen();
            if (oneIn(150))
                return m_window.resize(400 + below(1200), 300 + below(900));
            if (oneIn(12))
                return key(&m_window, Qt::Key_F1);
            top = &m_window;
        } else if (oneIn(6)) {
            return key(top, oneIn(2) ? Qt::Key_Escape : Qt::Key_Return);
        }
        if (oneIn(3)) {
            const QPoint place(below(top->width()), below(top->height()));
            QWidget *target = top->childAt(place);
            target = target ? target : top;
            poke(target, target->mapFrom(top, place));
        } else {
            QWidget *target = partOf(*top);
            poke(target, placeIn(*target));
        }
    }

    /// A widget in \a top that a user would aim at.
    QWidget *partOf(QWidget &top)
    {
        QWidgetList parts;
        for (QWidget *each : top.findChildren<QWidget *>()) {
            const auto *area = qobject_cast<const QAbstractScrollArea *>(each->parentWidget());
            const bool isAim =
                each->focusPolicy() != Qt::NoFocus || (area && area->viewport() == each);
            if (isAim && each->isVisible() && each->isEnabled() && each->window() == &top)
                parts.append(each);
        }
        return parts.isEmpty() ? &top : parts.at(below(int(parts.size())));
    }

    /// A cell of a table or tree, or any point.
    QPoint placeIn(QWidget &widget)
    {
        const auto *view = qobject_cast<const QAbstractItemView *>(widget.parentWidget());
        const QAbstractItemModel *model =
            view && view->viewport() == &widget ? view->model() : nullptr;
        QModelIndex cell;
        for (int level = 0; model && level < 2 && model->rowCount(cell) > 0; ++level) {
            if (level == 0 || oneIn(2))
                cell = model->index(below(model->rowCount(cell)), below(model->columnCount(cell)),
                                    cell);
        }
        const QPoint place = cell.isValid() ? view->visualRect(cell).center() : QPoint(-1, -1);
        return widget.rect().contains(place)
                   ? place
                   : QPoint(below(widget.width()), below(widget.height()));
    }

    void poke(QWidget *target, const QPoint &place)
    {
        if (target->window() == &m_window && isStopAt(target) && !oneIn(kStopsPassed))
            return;
        const auto modifiers = oneIn(4)   ? Qt::KeyboardModifiers(Qt::ControlModifier)
                               : oneIn(6) ? Qt::KeyboardModifiers(Qt::ShiftModifier)
                                          : Qt::KeyboardModifiers();
        switch (below(10)) {
        case 0:
        case 1:
        case 2:
            QTest::mouseClick(target, Qt::LeftButton, modifiers, place);
            break;
        case 3:
            QTest::mouseDClick(target, Qt::LeftButton, modifiers, place);
            break;
        case 4:
            openMenu(target, place);
            break;
        case 5:
        case 6:
            drag(target, place, modifiers);
            break;
        case 7:
            wheel(target, place, modifiers);
            break;
        default:
            randomKey(target, modifiers);
        }
    }

    static bool isStopAt(const QWidget *target)
    {
        const QList<QAction *> actions = target->actions();
        return std::any_of(actions.begin(), actions.end(), [](const QAction *each) {
            return each->objectName() == QLatin1String("stopAction");
        });
    }

    void openMenu(QWidget *target, const QPoint &place)
    {
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, target->mapToGlobal(place));
        QCoreApplication::sendEvent(target, &event);
    }

    void drag(const QPointer<QWidget> &target, QPoint place, Qt::KeyboardModifiers modifiers)
    {
        const auto button = oneIn(4) ? Qt::RightButton : Qt::LeftButton;
        QTest::mousePress(target, button, modifiers, place);
        for (int moves = 1 + below(5); moves > 0 && target; --moves) {
            place += QPoint(below(200) - 100, below(200) - 100);
            QMouseEvent move(QEvent::MouseMove, place, target->mapToGlobal(place), Qt::NoButton,
                             button, modifiers);
            QCoreApplication::sendEvent(target, &move);
        }
        if (target && !oneIn(20)) // else the button stays down
            QTest::mouseRelease(target, button, modifiers, place);
    }

    void wheel(QWidget *target, const QPoint &place, Qt::KeyboardModifiers modifiers)
    {
        QWheelEvent event(place, target->mapToGlobal(place), {}, {0, below(2) ? 120 : -120},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(target, &event);
    }

    void randomKey(QWidget *target, Qt::KeyboardModifiers modifiers)
    {
        static const Qt::Key keys[] = {
            Qt::Key_Tab,    Qt::Key_Backtab, Qt::Key_Up,    Qt::Key_Down,   Qt::Key_Left,
            Qt::Key_Right,  Qt::Key_Home,    Qt::Key_End,   Qt::Key_PageUp, Qt::Key_PageDown,
            Qt::Key_Return, Qt::Key_Escape,  Qt::Key_Space, Qt::Key_Delete, Qt::Key_Backspace,
            Qt::Key_F1,     Qt::Key_F2,      Qt::Key_F3,    Qt::Key_F4,     Qt::Key_F6,
            Qt::Key_F7,     Qt::Key_F8,      Qt::Key_0,     Qt::Key_1,      Qt::Key_9,
            Qt::Key_A,      Qt::Key_F,       Qt::Key_M,     Qt::Key_X,      Qt::Key_R};
        const Qt::Key chosen = keys[below(int(std::size(keys)))];
        if (chosen == Qt::Key_F4 && !oneIn(kStopsPassed))
            return;
        QWidget *focus = QApplication::focusWidget();
        key(focus && focus->window() == target->window() ? focus : target, chosen, modifiers);
    }

    static void key(QWidget *target, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        if (!target->isVisible()) // QTest would warn, and no user could
            return;
        QTest::keyClick(target, key, modifiers);
    }

    /// Files are chosen in the bench's folder or not at all: a random click could delete one.
    void choose(QFileDialog &files)
    {
        auto *name = files.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        if (!name || oneIn(3)) {
            files.reject();
            return;
        }
        const bool saves = files.acceptMode() == QFileDialog::AcceptSave;
        const QDir folder(m_bench.directory.path());
        name->setText(files.fileMode() == QFileDialog::Directory ? folder.path()
                      : saves                                    ? folder.filePath("saved")
                      : oneIn(2) ? folder.filePath("saved.analyzer_prj")
                                 : m_bench.file());
        QTest::keyClick(name, Qt::Key_Return);
        if (files.isVisible())
            files.reject();
    }

    void reopen()
    {
        const QString saved = QDir(m_bench.directory.path()).filePath("saved.analyzer_prj");
        const bool opensSaved = oneIn(2) && QFile::exists(saved);
        m_window.openFile(opensSaved ? saved : m_bench.file(), {}, m_bench.design.device, {});
    }

    Bench &m_bench;
    KEO::Analyzer &m_window;
    QRandomGenerator m_random;
    int m_left;
    int m_runs = 0;
    int m_captures = 0;
    bool m_wasBusy = false;
};

/// Everything but what the offscreen platform says of itself.
void report(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (!text.startsWith(QLatin1String("This plugin does not support")))
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

} // namespace

int main(int argc, char **argv)
{
    const int seed = argc > 1 ? std::atoi(argv[1]) : 0;
    const int events = argc > 2 ? std::atoi(argv[2]) : 10'000;
    if (argc < 2 || argc > 3 || events <= 0) {
        std::fputs("usage: monkey SEED [EVENTS]\n", stderr);
        return 2;
    }
    const QTemporaryDir sockets(QStringLiteral("/tmp/keo-XXXXXX"));
    qputenv("TMPDIR", sockets.path().toLocal8Bit());
    qputenv("XDG_DATA_HOME", sockets.path().toLocal8Bit());
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    qInstallMessageHandler(report);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));

    Bench bench(designOf(seed));
    QDir::setCurrent(bench.directory.path()); // where relative names end up
    KEO::Analyzer window;
    window.resize(1200, 800);
    window.show();
    window.openFile(bench.file(), {}, bench.design.device, {});
    const Monkey monkey(bench, window, seed, events);
    QApplication::exec();
    std::printf("seed %d: %d events, %d runs ended, %d of them with waves\n", seed, events,
                monkey.runs(), monkey.captures());
    return monkey.captures() > 0 ? 0 : 1;
}
