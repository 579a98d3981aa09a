#pragma once

#include <QString>

class QBoxLayout;
class QDialog;
class QDialogButtonBox;
class QLabel;
class QWidget;

namespace KEO {

/// A label with the text \a text, whose mnemonic leads to \a buddy. Owned by the caller.
[[nodiscard]] QLabel *labelFor(QWidget *buddy, const QString &text);

/// Ends the dialog's \a layout with Ok and Cancel, connected to the dialog, with Ok as the default
/// button. Borrowed.
QDialogButtonBox *addOkAndCancel(QDialog &dialog, QBoxLayout &layout);

/// \a widget, with the object name \a name.
template <typename Widget>
[[nodiscard]] Widget *named(Widget *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace KEO
