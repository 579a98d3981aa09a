#pragma once

#include "bench.h"
#include "widgettest.h"

#include <shell/analyzer.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QBitArray>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>
#include <QWindow>

#include <initializer_list>
#include <memory>
#include <utility>

using WaveMonitor::WaveMonitorWidget;

/// A user before the screen: the real main window with its project. Answers every message box with
/// Yes or OK unless told otherwise.
struct UserWindow
{
    UserWindow()
    {
        window->resize(1200, 900);
        window->show();
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = window->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    QTabWidget *tabs() const { return find<QTabWidget>("tabWidget"); }
    WaveMonitorWidget *wave(int tab) const
    {
        return qobject_cast<WaveMonitorWidget *>(tabs()->widget(tab));
    }
    /// Titles of all tabs.
    QStringList titles() const
    {
        QStringList all;
        for (int tab = 0; tab < tabs()->count(); ++tab)
            all.append(tabs()->tabText(tab));
        return all;
    }
    QStringList toolTexts() const
    {
        QStringList all;
        for (const QAction *action : find<QToolBar>("toolBar")->actions())
            all.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        return all;
    }
    QAction *tool(const QString &text) const
    {
        for (QAction *action : find<QToolBar>("toolBar")->actions()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }
    bool isEnabled(const char *text) const
    {
        const QAction *action = tool(QLatin1String(text));
        return action && action->isEnabled();
    }
    /// Enabled ones of these, in this order: Open, Start, Auto, Stop, Force Trigger, Save, Export,
    /// and the page of a standard project.
    QString enabled() const
    {
        QString letters;
        for (const auto &[letter, text] :
             std::initializer_list<std::pair<char, const char *>>{{'O', "Open..."},
                                                                  {'S', "Start"},
                                                                  {'A', "Auto"},
                                                                  {'X', "Stop"},
                                                                  {'F', "Force Trigger"},
                                                                  {'W', "Save..."},
                                                                  {'E', "Export"}})
            letters += QLatin1Char(isEnabled(text) ? letter : '-');
        const auto *page = window->findChild<QTreeWidget *>(QStringLiteral("coreTree"));
        return letters + (page && page->isEnabled() ? u'P' : u'-');
    }
    void click(const QString &text) const
    {
        QWidget *button = find<QToolBar>("toolBar")->widgetForAction(tool(text));
        QTest::mouseClick(button, Qt::LeftButton);
    }
    /// After a box the offscreen window system activates nothing; a real one gives the focus back.
    void activate() const
    {
        const auto isActive = [this] {
            window->activateWindow(); // again, since a box may have come meanwhile
            // It counts as active while a dialog of its own is; behind a menu none is told.
            const QWidget *active = QApplication::activeWindow();
            return window->windowHandle()->isActive() && (!active || active == window.get());
        };
        QTRY_VERIFY(isActive());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        activate();
        QTest::keyClick(window.get(), key, modifiers);
    }
    bool isBusy() const { return isEnabled("Stop"); }
    /// No run, and no tip left behind.
    bool isIdle() const { return !isBusy() && !waitingTip(); }
    void capture() const
    {
        press(Qt::Key_F1);
        QTRY_VERIFY_WITH_TIMEOUT(!isBusy(), kCaptureTime);
    }
    /// Presses Save and types \a name into the dialog, or closes it for an empty one.
    void saveAs(const QString &name) const
    {
        const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
            QCOMPARE(box->windowTitle(), "Save Data File");
            QCOMPARE(box->nameFilters(), QStringList("KEO Analyzer Project File (*.analyzer_prj)"));
            box->findChild<QLineEdit *>()->setText(name);
            QTest::keyClick(box, name.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
        });
        press(Qt::Key_S, Qt::ControlModifier);
        QVERIFY(dialog.seen());
    }

    BoxWatcher boxes{QMessageBox::Yes};
    std::unique_ptr<KEO::Analyzer> window = std::make_unique<KEO::Analyzer>();
};

/// A user with a bench.
struct Desktop : Bench, UserWindow
{
    explicit Desktop(const TestDesign &board) : Bench(board) {}

    void open() { open(file()); }
    void open(const QString &path) { window->openFile(path, {}, design.device, {}); }
};

/// The number that the bus of a design shows at a sample.
inline int countAt(const WaveMonitorWidget &wave, int sample)
{
    const auto elements = wave.signalMap();
    int count = 0;
    for (int bit = 0; bit < 16; ++bit)
        count = count << 1 | int(elements[bit].data.testBit(sample));
    return count;
}

/// Are all signals over all samples the design's, beginning with the sample \a first?
inline bool isStimulus(const WaveMonitorWidget *wave, const TestDesign &design, qint64 first)
{
    if (!wave || wave->signalMap().size() != design.signalCount())
        return false;
    const auto elements = wave->signalMap();
    for (int signal = 0; signal < design.signalCount(); ++signal) {
        QBitArray expected(design.amount);
        for (int sample = 0; sample < design.amount; ++sample)
            expected[sample] = design.level(signal, first + sample);
        if (elements[signal].data != expected || elements[signal].name != design.name(signal))
            return false;
    }
    return true;
}

/// What a viewer shows of the rounds of an Auto run.
inline QString counterText(const QWidget &wave)
{
    for (const QLabel *label : wave.findChildren<QLabel *>()) {
        if (label->text().contains(QLatin1String("Autorun")))
            return label->text().trimmed();
    }
    return {};
}
