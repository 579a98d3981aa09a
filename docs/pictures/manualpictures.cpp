#include "picturefile.h"

#include <base/siblingprogram.h>
#include <servers/exampledesign.h>
#include <support/desktop.h>
#include <support/files.h>
#include <support/widgettest.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <QToolButton>

using namespace KEO;
using namespace WaveMonitor;

/// Takes the pictures of the manual and the tour, a function each or a few of one sitting, and
/// writes them into the folder that the environment variable PICTURES names.
class ManualPictures : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void emptyPage();
    void configuration();
    void dialogs();
    void waves();
    void overrun();
    void autorun();
    void changedDescription();
    void missingBitstream();
    void programmer();
    void liteCore();
};

namespace {

const QString kExamples = QStringLiteral(KEO_SOURCE_DIR "/examples/");

constexpr QSize kWaves(1100, 430);
constexpr QSize kPage(1100, 540);
constexpr int kLayoutTime = 100;  // ms until what is laid out later stands
constexpr int kPatience = 20'000; // ms

/// The times that the status line and the log of the programmer tell.
QList<QRect> clocksIn(const QWidget &window)
{
    QList<QRect> clocks;
    for (const char *name : {"runStatus", "toldStatus", "textBrowser"}) {
        if (const auto *label = window.findChild<QWidget *>(QLatin1String(name)))
            clocks.append(QRect(label->mapTo(&window, QPoint()), label->size()));
    }
    return clocks;
}

void save(const QImage &image, const char *name, const QList<QRect> &clocks = {})
{
    const QString path = QDir(qEnvironmentVariable("PICTURES")).filePath(QLatin1String(name));
    QVERIFY2(writePicture({image, clocks}, path + ".png"), qPrintable(path));
}

/// A user at the main window, with an example's board on the cables and a copy of its description
/// at home.
class Sitting final : public UserWindow
{
public:
    explicit Sitting(const QString &example, const QString &board = QStringLiteral("board.json"))
        : description(QDir::homePath() + u'/' + example + u'/' + example + QStringLiteral(".keo"))
    {
        const QString folder = kExamples + example + u'/';
        qputenv("SIGNALSCOPE_BOARD", (folder + board).toLocal8Bit());
        JtagSession::instance()->connectServers(launchServers(m_servers, siblingDirectory()));
        QDir().mkpath(QFileInfo(description).path());
        putFile(description, contentOf(folder + example + ".keo"));
        window->resize(kWaves);
    }
    ~Sitting()
    {
        window.reset();
        JtagSession::instance()->disconnectAll();
        killServers(m_servers);
    }

    void open(const QString &device) const { window->openFile(description, "KR", device, {}); }
    void chooseCable(int index) const { find<QComboBox>("cableCombo")->setCurrentIndex(index); }
    void check(int core) const
    {
        find<QTreeWidget>("coreTree")->topLevelItem(core)->setCheckState(0, Qt::Checked);
    }
    void select(int core) const
    {
        auto *tree = find<QTreeWidget>("coreTree");
        tree->setCurrentItem(tree->topLevelItem(core));
    }
    void editUnit() const
    {
        auto *table = find<QTableView>("tableUnit");
        doubleClick(table, table->model()->index(0, 3));
    }
    void showTab(int tab) const
    {
        tabs()->setCurrentIndex(tab);
        QTest::qWait(kLayoutTime);
    }
    [[nodiscard]] QImage look() const
    {
        QTest::qWait(kLayoutTime);
        return window->grab().toImage();
    }
    void take(const char *name, const QSize &size) const
    {
        window->resize(size);
        save(look(), name, clocksIn(*window));
    }
    /// With the menu that the right button brings up at \a place of \a viewport.
    void takeMenu(const char *name, QWidget *viewport, const QPoint &place) const
    {
        const QImage below = look();
        QTimer::singleShot(100, window.get(), [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            QImage both = below;
            QPainter(&both).drawPixmap(menu->pos() - window->pos(), menu->grab());
            save(both, name, clocksIn(*window));
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, viewport->mapToGlobal(place));
        QApplication::sendEvent(viewport, &event);
    }

    const QString description;

private:
    ServerProcesses m_servers;
};

/// Takes the dialog that comes up next, once \a fill has filled it, and leaves it.
template <typename Fill>
OnModal<QDialog> takeDialog(const char *name, Fill fill, Qt::Key leave = Qt::Key_Escape)
{
    return OnModal<QDialog>([name, fill, leave](QDialog *dialog) {
        fill(*dialog);
        QTest::qWait(50);
        save(dialog->grab().toImage(), name);
        QTest::keyClick(dialog, leave);
    });
}

void chooseText(QComboBox *box, const QString &text)
{
    box->setCurrentText(text);
    Q_EMIT box->activated(box->currentIndex());
}

} // namespace

void ManualPictures::initTestCase()
{
    QVERIFY(QDir(qEnvironmentVariable("PICTURES")).exists());
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(9);
    QApplication::setFont(font);
    QVERIFY2(QFontInfo(font).family() == "DejaVu Sans", "the font DejaVu Sans is not installed");
}

void ManualPictures::emptyPage()
{
    const Sitting user("uart_fifo");
    qunsetenv("SIGNALSCOPE_BOARD");
    const auto example = exampleDesign(siblingDirectory());
    QVERIFY(example);
    user.window->offerExample(*example);
    user.find<QPushButton>("exampleButton")->setFocus();
    user.take("tour-start", kWaves);
}

void ManualPictures::configuration()
{
    const Sitting user("uart_fifo");
    user.open("KR-C");
    user.check(1);
    user.select(1);
    user.take("configuration", kPage);
}

void ManualPictures::dialogs()
{
    const Sitting user("uart_fifo");
    user.open("KR-C");
    user.select(1);
    user.window->resize(kPage);
    QTest::qWait(kLayoutTime);
    {
        const auto dialog = takeDialog("match-unit", [](QDialog &) {});
        user.editUnit();
        QTRY_VERIFY(dialog.seen());
    }
    {
        const auto dialog =
            takeDialog("expression", [](QDialog &box) { QTest::keyClicks(&box, "0&(1|3)"); });
        auto *list = user.find<QListWidget>("listExpressions");
        const QRect row = list->visualItemRect(list->item(0));
        const QPoint name(row.left() + 60, row.center().y());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, name);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, name);
        QTRY_VERIFY(dialog.seen());
    }
}

void ManualPictures::waves()
{
    const Sitting user("uart_fifo");
    user.open("KR-C");
    user.check(1);
    user.capture();
    user.showTab(1);
    user.press(Qt::Key_F6);
    user.take("waves", kWaves);

    WaveMonitorWidget *const viewer = user.wave(1);
    auto *waves = viewer->findChild<WaveView *>();
    QWidget *port = waves->viewport();
    QTest::mousePress(port, Qt::LeftButton, {}, {150, 60});
    QTest::mouseMove(port, {250, 100});
    QTest::mouseMove(port, {420, 140});
    user.take("region", kWaves);
    QTest::keyClick(waves, Qt::Key_Escape);
    QTest::mouseRelease(port, Qt::LeftButton, {}, {420, 140});

    user.window->resize(1100, 560);
    auto *names = viewer->findChild<SignalTreeView *>();
    names->expand(names->model()->index(2, 0));
    user.press(Qt::Key_F8);
    QTest::keyClick(waves, Qt::Key_T);
    QTest::qWait(kLayoutTime);
    auto *ruler = viewer->findChild<RulerView *>();
    for (const int x : {436, 314}) {
        QTest::mouseDClick(ruler->viewport(), Qt::LeftButton, {}, {x, ruler->height() - 10});
        QTest::qWait(QApplication::doubleClickInterval());
    }
    auto *period = viewer->findChild<QLineEdit *>("clockPeriod");
    QTest::keyClicks(period, "20 ns");
    QTest::keyClick(period, Qt::Key_Return);
    user.take("markers", {1100, 560});

    names->collapse(names->model()->index(2, 0));
    user.window->resize(640, 560);
    QTest::qWait(kLayoutTime);
    const QRect bus = names->visualRect(names->model()->index(2, 0));
    QTest::mouseClick(names->viewport(), Qt::LeftButton, {}, bus.center());
    user.takeMenu("row-menu", names->viewport(), {bus.left() + 60, bus.center().y()});
}

// The way of the tour: which byte does the FIFO lose, and why?
void ManualPictures::overrun()
{
    const Sitting user("uart_fifo");
    user.open("KR-C");
    user.check(1);
    user.capture();
    user.showTab(0);
    user.find<QTreeWidget>("coreTree")->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    user.select(1);
    QTest::qWait(50);
    auto *list = user.find<QListWidget>("listExpressions");
    for (int row = 0; row < 2; ++row)
        list->item(row)->setCheckState(Qt::Unchecked);
    chooseText(user.find<QComboBox>("comboBoxWindow"), "1");
    chooseText(user.find<QComboBox>("comboBoxAmount"), "1024");
    user.find<QSpinBox>("spinBoxTrPos")->setValue(900);
    user.take("tour-trigger", kPage);

    user.capture();
    user.showTab(1);
    user.press(Qt::Key_F6);
    user.take("tour-overrun", kWaves);

    const auto dialog = takeDialog("export", [](QDialog &box) {
        box.findChild<QSpinBox *>("spinPeriod")->setValue(20);
        box.findChild<QComboBox *>("comBoxPeriod")->setCurrentIndex(1);
        box.findChild<QLineEdit *>("editName")->setText("overrun");
        box.findChild<QComboBox *>("comBoxFormat")->setCurrentIndex(2);
        box.findChild<QComboBox *>("comboBoxForPRN")->setCurrentIndex(2);
        box.resize(500, 478);
    });
    user.click("Export");
    QVERIFY(dialog.seen());

    // The next question: when does the reader begin on a filled FIFO?
    list->item(2)->setCheckState(Qt::Unchecked);
    list->item(0)->setCheckState(Qt::Checked);
    user.press(Qt::Key_R, Qt::ControlModifier);
    user.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    auto *why = user.find<QDialog>("whyNoTrigger");
    why->resize(700, 230);
    why->findChild<QListWidget *>("whyLines")->setCurrentRow(1);
    QTest::qWait(kLayoutTime);
    save(why->grab().toImage(), "tour-why");
    why->close();

    user.showTab(0);
    const OnModal<QDialog> range([](QDialog *box) {
        auto *maximum = box->findChild<QLineEdit *>("lineEditValue1");
        maximum->setFocus();
        QTest::keyClick(maximum, Qt::Key_Home);
        QTest::keyClicks(maximum, "10000");
        QTest::keyClick(maximum, Qt::Key_Return);
    });
    user.editUnit();
    QVERIFY(range.seen());
    user.showTab(1);
    user.press(Qt::Key_F5);
    user.take("tour-rehearsal", {1100, 560});

    auto *names = user.wave(1)->findChild<SignalTreeView *>();
    const QRect level = names->visualRect(names->model()->index(5, 0));
    QTest::mouseClick(names->viewport(), Qt::LeftButton, {}, level.center());
    const auto proposal = takeDialog("tour-proposal", [](QDialog &) {});
    user.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QTRY_VERIFY(proposal.seen());
}

void ManualPictures::autorun()
{
    const Sitting user("uart_fifo");
    user.open("KR-C");
    user.press(Qt::Key_F2);
    QTRY_VERIFY_WITH_TIMEOUT(user.wave(1), kPatience);
    QTRY_VERIFY_WITH_TIMEOUT(counterText(*user.wave(1)).contains('4'), kPatience);
    user.showTab(1);
    user.press(Qt::Key_F6);
    user.take("auto", {1100, 330});
    user.press(Qt::Key_F4);
    QTRY_VERIFY_WITH_TIMEOUT(user.isIdle(), kPatience);
}

void ManualPictures::changedDescription()
{
    const Sitting user("uart_fifo");
    user.open("KR-C");
    user.capture();
    user.showTab(0);
    QByteArray text = contentOf(user.description);
    text.replace("storage_depth=\"4096\"", "storage_depth=\"8192\"");
    putFile(user.description, text);
    QTRY_VERIFY_WITH_TIMEOUT(user.window->findChild<QWidget *>("reloadBanner") &&
                                 user.find<QWidget>("reloadBanner")->isVisible(),
                             kPatience);
    user.take("description-changed", kPage);
}

void ManualPictures::missingBitstream()
{
    Sitting user("uart_fifo");
    user.open("KR-C");
    user.chooseCable(1);
    user.boxes.whileOpen = [](const QMessageBox &box) {
        save(const_cast<QMessageBox &>(box).grab().toImage(), "error");
    };
    user.press(Qt::Key_F1);
    QTRY_VERIFY_WITH_TIMEOUT(!user.boxes.seen.isEmpty(), kPatience);
}

void ManualPictures::programmer()
{
    const Sitting user("uart_fifo");
    user.open({});
    user.window->resize(1000, 700);
    user.chooseCable(1);
    clickMark(user.find<QCheckBox>("checkBox"));
    QTest::qWait(50);
    const auto chooser = takeDialog(
        "device-chooser", [](QDialog &box) { box.resize(500, 200); }, Qt::Key_Return);
    QTest::mouseClick(user.find<QToolButton>("searchDevice"), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(chooser.seen() && !waitingTip(), kPatience);

    auto *table = user.find<QTableView>("tableView");
    const QRect enable = table->visualRect(table->model()->index(0, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      {enable.left() + 10, enable.center().y()});
    table->model()->setData(table->model()->index(0, 4),
                            "examples/uart_fifo/bitstreams/uart_fifo.fs");
    QTest::mouseClick(user.find<QToolButton>("downLoad"), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(
        user.find<QLabel>("programStatusLabel")->text().contains("Ready to acquire"), kPatience);
    QTRY_VERIFY_WITH_TIMEOUT(!waitingTip(), kPatience);
    user.take("programmer", {1000, 700});
}

void ManualPictures::liteCore()
{
    const Sitting user("spi_adc");
    user.open("KR-H");
    user.take("lite-core", {1100, 250});
    user.capture();
    user.showTab(1);
    user.press(Qt::Key_F6);
    user.take("lite-waves", {1100, 400});
}

KEO_WIDGET_TEST_MAIN(ManualPictures)
#include "manualpictures.moc"
