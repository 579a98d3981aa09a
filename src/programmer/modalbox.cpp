#include "modalbox.h"

#include <QApplication>
#include <QPointer>

namespace KEO {

void showModalBox(QMessageBox::Icon icon, const QString &title, const QString &text)
{
    const QPointer<QMessageBox> box =
        new QMessageBox(icon, title, text, QMessageBox::Ok, QApplication::activeWindow());
    box->exec();
    delete box;
}

} // namespace KEO
