#include "messagebox.h"

#include <QGridLayout>
#include <QPointer>
#include <QSpacerItem>
#include <QStyle>

namespace KEO {

namespace {

constexpr int kTitleBarParts = 5; // icon and buttons, each about as wide as the bar is high

/// A box with a short text is narrower than its title, and window managers cut the title then.
void makeRoomForTitle(QMessageBox &box)
{
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    if (!grid)
        return;
    QFont titleFont = box.font();
    titleFont.setBold(true); // as window managers like to have it
    const int width = QFontMetrics(titleFont).horizontalAdvance(box.windowTitle()) +
                      kTitleBarParts * box.style()->pixelMetric(QStyle::PM_TitleBarHeight);
    grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
}

} // namespace

QMessageBox::StandardButton showBox(QMessageBox::Icon icon, QWidget *parent, const QString &title,
                                    const QString &text, QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton defaultButton,
                                    const std::function<void(QMessageBox *)> &prepare)
{
    // On the heap: a window that is destroyed while its box shows takes the box along.
    const QPointer<QMessageBox> box = new QMessageBox(icon, title, text, buttons, parent);
    box->setTextFormat(Qt::PlainText); // paths and names may look like markup
    box->setDefaultButton(defaultButton);
    makeRoomForTitle(*box);
    if (prepare)
        prepare(box);
    const int answer = box->exec();
    if (!box)
        return QMessageBox::NoButton;
    delete box;
    return QMessageBox::StandardButton(answer);
}

} // namespace KEO
