#include "widgettest.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QImage>
#include <QMenu>
#include <QPointer>
#include <QTextDocumentFragment>

#include <algorithm>

void WidgetTest::init()
{
    QTest::failOnWarning(QRegularExpression(
        QStringLiteral("^(?!This plugin does not support|Mouse event .* not accepted by)")));
}

BoxWatcher::BoxWatcher(QMessageBox::StandardButton button) : answer(button)
{
    connect(&m_timer, &QTimer::timeout, this, &BoxWatcher::look);
    m_timer.start(5);
}

int BoxWatcher::openBoxes()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    return int(std::count_if(widgets.begin(), widgets.end(), [](const QWidget *widget) {
        return qobject_cast<const QMessageBox *>(widget) && widget->isVisible();
    }));
}

void BoxWatcher::look()
{
    const QPointer<QMessageBox> box =
        qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (!box || isPassive)
        return;
    // Paths and names stand in boxes, and a stranger's may be markup.
    if (box->textFormat() != Qt::PlainText && !qobject_cast<QFileDialog *>(box->parentWidget()))
        qWarning("a box shows markup");
    seen.append(box->windowTitle() + QStringLiteral(": ") + box->text());
    if (const auto task = std::exchange(whileOpen, {}))
        task(*box);
    if (!box)
        return;
    if (QAbstractButton *const wanted = box->button(answer))
        QTest::keyClick(wanted, Qt::Key_Space);
    else
        QTest::keyClick(box, Qt::Key_Return);
}

QImage pixelsOf(QWidget *widget)
{
    const QImage grabbed = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const qreal ratio = grabbed.devicePixelRatio();
    QImage pixels(widget->size(), QImage::Format_RGB32);
    for (int y = 0; y < pixels.height(); ++y) {
        const auto *from = reinterpret_cast<const QRgb *>(grabbed.constScanLine(int(y * ratio)));
        auto *to = reinterpret_cast<QRgb *>(pixels.scanLine(y));
        for (int x = 0; x < pixels.width(); ++x)
            to[x] = from[int(x * ratio)];
    }
    return pixels;
}

QString shownTip(const QString &tip)
{
    return Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip;
}

QStringList driveContextMenu(QWidget *viewport, const QPoint &position, const QString &choice)
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

void clickMark(QWidget *button)
{
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

void chooseByKeys(QComboBox *box, const QString &text)
{
    const int wanted = box->findText(text);
    QVERIFY(wanted >= 0);
    while (box->currentIndex() != wanted)
        QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
}

void doubleClick(QAbstractItemView *view, const QModelIndex &index)
{
    const QPoint place = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, place);
}
