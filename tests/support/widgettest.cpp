#include "widgettest.h"

#include <QAbstractButton>
#include <QPointer>

#include <algorithm>

void WidgetTest::init()
{
    QTest::failOnWarning(QRegularExpression(
        QStringLiteral("^(?!This plugin does not support|Mouse event .* not accepted by)")));
}

BoxWatcher::BoxWatcher(QMessageBox::StandardButton answer) : m_answer(answer)
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
    seen.append(box->windowTitle() + QStringLiteral(": ") + box->text());
    if (const auto task = std::exchange(whileOpen, {}))
        task(*box);
    if (!box)
        return;
    if (m_answer == QMessageBox::NoButton)
        QTest::keyClick(box, Qt::Key_Return);
    else
        QTest::keyClick(box->button(m_answer), Qt::Key_Space);
}
