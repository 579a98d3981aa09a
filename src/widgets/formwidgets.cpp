#include "formwidgets.h"

#include <QBoxLayout>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>

namespace KEO {

QLabel *labelFor(QWidget *buddy, const QString &text)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

QDialogButtonBox *addOkAndCancel(QDialog &dialog, QBoxLayout &layout)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout.addWidget(buttons);
    // Only now is it a button of the dialog. Asked before, Ok would lose the Enter key for good to
    // whichever button the focus has passed.
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    return buttons;
}

} // namespace KEO
