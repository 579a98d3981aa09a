#include "formwidgets.h"

#include <QLabel>

namespace KEO {

QLabel *labelFor(QWidget *buddy, const QString &text)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

} // namespace KEO
