#pragma once

#include <QMessageBox>

namespace KEO {

/// A modal box with the button OK over the active window, which may end before the box does.
void showModalBox(QMessageBox::Icon icon, const QString &title, const QString &text);

} // namespace KEO
