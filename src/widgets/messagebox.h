#pragma once

#include <QMessageBox>

namespace KEO {

/// Shows a message box with plain text over \a parent, wide enough for its title, and waits for the
/// answer. Gives QMessageBox::NoButton when the parent was destroyed meanwhile, and the box with
/// it: whoever asked may be gone then as well.
QMessageBox::StandardButton
showBox(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text,
        QMessageBox::StandardButtons buttons = QMessageBox::Ok,
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);

} // namespace KEO
