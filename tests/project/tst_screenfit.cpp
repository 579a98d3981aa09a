// The window with every page, and the dialogs, on a small screen and with a large font; and what
// the Enter key does in the dialogs.

#include <config/coreconfig.h>
#include <export_ui/exportdialog.h>
#include <support/debugapplication.h>
#include <support/desktop.h>
#include <support/files.h>
#include <trigger_ui/matchunitdialog.h>
#include <trigger_ui/muexpressiondialog.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDockWidget>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <QWheelEvent>

using namespace KEO;

class tst_ScreenFit : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QApplication::setFont(m_font); }
    void windows_data();
    void windows();
    void pageWithoutDesign();
    void wheelPassesFields();
    void dialogs_data();
    void dialogs();
    void enterAfterCancel_data() { dialogs_data(); }
    void enterAfterCancel();

private:
    const QFont m_font = QApplication::font();
};

namespace {

constexpr QSize kScreen(800, 600);
constexpr QSize kFrame(8, 32); // of a window manager
constexpr int kLargeFont = 15; // points

void enlargeFont()
{
    QFont font = QApplication::font();
    font.setPointSize(kLargeFont);
    QApplication::setFont(font);
}

bool fits(const QSize &size)
{
    const QSize whole = size + kFrame;
    return whole.width() <= kScreen.width() && whole.height() <= kScreen.height();
}

QByteArray text(const QSize &size)
{
    return QByteArray::number(size.width()) + " x " + QByteArray::number(size.height());
}

using MakeDialog = std::function<std::unique_ptr<QDialog>()>;

} // namespace
Q_DECLARE_METATYPE(MakeDialog)

void tst_ScreenFit::windows_data()
{
    addColumns<bool, bool>({"lite", "isLarge"});
    for (const bool lite : {false, true}) {
        for (const bool isLarge : {false, true}) {
            QTest::addRow("%s, %s font", lite ? "lite" : "standard", isLarge ? "large" : "usual")
                << lite << isLarge;
        }
    }
}

// This program runs with -debug, so the dock with its 500 x 300 pixels takes its part.
void tst_ScreenFit::windows()
{
    QFETCH(bool, lite);
    QFETCH(bool, isLarge);
    if (isLarge)
        enlargeFont();
    TestDesign design;
    design.lite = lite;
    design.windows = lite ? 1 : 2;
    Desktop d(design);
    d.open();
    Analyzer &window = *d.window;
    window.resize(kScreen - kFrame);
    QTabWidget *tabs = d.tabs();
    QCOMPARE(tabs->count(), 1);
    const auto settle = [&] {
        QTest::qWait(10);
        QVERIFY2(fits(window.minimumSizeHint()), text(window.minimumSizeHint()));
        QVERIFY2(fits(window.size()), text(window.size()));
    };
    settle();
    if (!lite) { // what is refused is said in sight
        auto *units = d.find<QTableView>("tableUnit");
        QApplication::clipboard()->setText("nothing");
        units->selectRow(0);
        d.activate();
        units->setFocus();
        QTest::keyClick(units, Qt::Key_V, Qt::ControlModifier);
        const auto *strip = d.find<QListWidget>("triggerCheck");
        QTest::qWait(10);
        QVERIFY(strip->item(0)->text().startsWith("Not pasted"));
        const QRect line = strip->visualItemRect(strip->item(0));
        const QRegion seen = strip->viewport()->visibleRegion();
        QVERIFY(seen.contains(line.topLeft()) && seen.contains(line.bottomLeft()));
    }
    auto *inUse = d.find<QWidget>("programmerWidget")->findChild<QCheckBox *>();
    for (const bool on : {true, false}) {
        inUse->setChecked(on);
        settle();
    }
    // The message of a changed description keeps its words, and its buttons.
    putFile(d.file(), contentOf(d.file()).replace("count", "sum"));
    QTRY_VERIFY(window.findChild<QPushButton *>("btnKeep"));
    settle();
    // Beside the dock of this program there is room for the buttons alone; without it, for all.
    window.findChild<QDockWidget *>()->hide();
    settle();
    const auto *message = d.find<QLabel>("labelFile");
    const int least =
        message->fontMetrics().horizontalAdvance("Keo file '/...keo' has been changed on disk.");
    QVERIFY2(message->width() > least, text(message->size()));
    window.findChild<QDockWidget *>()->show();
    d.press(Qt::Key_F1);
    QTRY_VERIFY_WITH_TIMEOUT(tabs->count() > 1, kCaptureTime);
    settle();
    QTRY_VERIFY_WITH_TIMEOUT(!waitingTip(), kCaptureTime);

    // What does not fit can be reached.
    tabs->setCurrentIndex(0);
    window.resize(kScreen.width() / 2, kScreen.height() / 2);
    const auto *area = tabs->widget(0)->findChild<QAbstractScrollArea *>();
    QTRY_VERIFY(area->verticalScrollBar()->maximum() + area->horizontalScrollBar()->maximum() > 0);
}

// The reason stands below a long path, and the files below the reason.
void tst_ScreenFit::pageWithoutDesign()
{
    enlargeFont();
    Desktop d({});
    const QString deep =
        d.directory.filePath(QStringLiteral("a_folder_of_many_letters/").repeated(6));
    QVERIFY(QDir().mkpath(deep));
    for (const char *name : {"1.keo", "2.keo", "3.keo"}) {
        QVERIFY(QFile::copy(d.file(), deep + name));
        d.open(deep + name);
    }
    d.open(deep + "none.keo");
    d.window->resize(kScreen - kFrame);
    QTest::qWait(10);
    const auto *refused = d.find<QLabel>("refusedFile");
    QVERIFY2(refused->height() >= refused->heightForWidth(refused->width()), text(refused->size()));
    auto *recent = d.find<QListWidget>("recentList");
    QVERIFY2(recent->height() >= recent->minimumSizeHint().height(), text(recent->size()));
    const auto isSeen = [](const QWidget *widget, const QPoint &place) {
        return widget->visibleRegion().contains(place);
    };
    const auto lastRow = [&] { return recent->visualItemRect(recent->item(2)).bottomLeft(); };
    d.activate();
    recent->setFocus();
    for (int row = 0; row < 2; ++row)
        QTest::keyClick(recent, Qt::Key_Down);
    QTRY_VERIFY(isSeen(recent->viewport(), lastRow()));
    d.open(deep + "none.keo");
    QTRY_VERIFY(isSeen(refused, {refused->width() / 2, 0}));
}

// Rolling down a page must not set a trigger position.
void tst_ScreenFit::wheelPassesFields()
{
    Desktop d({});
    d.open();
    d.window->resize(400, 300);
    auto *field = d.find<QWidget>("configTab")->findChild<QSpinBox *>();
    const auto roll = [&] {
        const QPointF place = field->rect().center();
        QWheelEvent event(place, field->mapToGlobal(place), {}, {0, -120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(field, &event);
    };
    d.activate();
    const int before = field->value();
    roll();
    QCOMPARE(field->value(), before);
    field->setFocus();
    roll();
    QVERIFY(field->value() != before);
}

void tst_ScreenFit::dialogs_data()
{
    QTest::addColumn<MakeDialog>("make");
    QTest::newRow("expression") << MakeDialog(
        [] { return std::make_unique<MuExpressionDialog>(); });
    QTest::newRow("match unit") << MakeDialog([] {
        static CoreConfig core;
        MatchUnit *unit = core.matchUnitByIndex(0);
        unit->trigger = core.triggerByIndex(0);
        SignalEntry bus{"bus", {}, {}};
        for (int i = 0; i < 64; ++i)
            bus.members.append({QStringLiteral("bus[%1]").arg(i), {}, {}});
        unit->trigger->signals = {bus};
        return std::make_unique<MatchUnitDialog>(unit, false);
    });
    QTest::newRow("export") << MakeDialog([] {
        return std::make_unique<ExportDialog>(
            ExportSource{.directory = QDir::tempPath(), .cores = {}});
    });
}

void tst_ScreenFit::dialogs()
{
    QFETCH(MakeDialog, make);
    for (const bool isLarge : {false, true}) {
        if (isLarge)
            enlargeFont();
        const auto dialog = make();
        dialog->show();
        QVERIFY2(fits(dialog->size()), text(dialog->size()));
        QVERIFY2(fits(dialog->minimumSizeHint()), text(dialog->minimumSizeHint()));
        // Nothing is squeezed whatever shows.
        auto *format = dialog->findChild<QComboBox *>("comBoxFormat");
        for (int i = format ? format->count() - 1 : -1; i >= 0; --i) {
            format->setCurrentIndex(i);
            for (const QComboBox *box : dialog->findChildren<QComboBox *>())
                QTRY_VERIFY(!box->isVisible() || box->height() >= box->sizeHint().height());
            QVERIFY2(fits(dialog->size()), text(dialog->size()));
        }
    }
}

// Once the focus has been on Cancel and gone on, Enter means Ok again.
void tst_ScreenFit::enterAfterCancel()
{
    QFETCH(MakeDialog, make);
    const auto dialog = make();
    dialog->show();
    dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    const auto *buttons = dialog->findChild<QDialogButtonBox *>();
    QPushButton *cancel = buttons->button(QDialogButtonBox::Cancel);
    for (int presses = 0; dialog->focusWidget() != cancel; ++presses) {
        QVERIFY(presses < 50);
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
    }
    QVERIFY(cancel->isDefault());
    QTest::keyClick(cancel, Qt::Key_Tab);
    QVERIFY(!qobject_cast<QPushButton *>(dialog->focusWidget()) ||
            !static_cast<QPushButton *>(dialog->focusWidget())->autoDefault());
    QVERIFY(buttons->button(QDialogButtonBox::Ok)->isDefault());
    QVERIFY(!cancel->isDefault());
}

KEO_OWN_TEST_MAIN((runTest<tst_ScreenFit, DebugApplication>))
#include "tst_screenfit.moc"
