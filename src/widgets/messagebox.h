#pragma once

#include <QMessageBox>

#include <functional>

namespace KEO {

/// Shows a message box with plain text over \a parent, wide enough for its title, and waits for the
/// answer. Gives QMessageBox::NoButton when the parent was destroyed meanwhile, and the box with
/// it: whoever asked may be gone then as well. \a prepare gets the box before it shows, such as to
/// end it with an answer when there is nothing left to ask.
///
/// What began inside the box's event loop keeps the box waiting until it has come to its end. Who
/// is to hear the answer before that connects to QMessageBox::finished in \a prepare.
QMessageBox::StandardButton
showBox(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text,
        QMessageBox::StandardButtons buttons = QMessageBox::Ok,
        QMessageBox::StandardButton defaultButton = QMessageBox::NoButton,
        const std::function<void(QMessageBox *)> &prepare = {});

} // namespace KEO
