#include "sidewindow.h"

#include <QGuiApplication>
#include <QList>
#include <QShortcut>

namespace KEO {

/// A tool window, for in such a one the toolkit goes on looking at the keys of the window below.
SideWindow::SideWindow(const QString &name, const QString &title, QWidget *parent)
    : QDialog(parent, Qt::Tool)
{
    setObjectName(name);
    setWindowTitle(title);
    if (!parent)
        return;
    m_round = new QShortcut(Qt::CTRL | Qt::Key_F6, parent->window());
    connect(m_round, &QShortcut::activated, this, &SideWindow::goRound);
    connect(m_round, &QShortcut::activatedAmbiguously, this, &SideWindow::goRound); // of several
}

SideWindow::~SideWindow()
{
    delete m_round;
}

void SideWindow::reach()
{
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    show();
    raise();
    activateWindow();
}

void SideWindow::showBeside()
{
    QWidget *window = parentWidget();
    // The window may not have it yet, where another one beside it has gone just now.
    const bool isInUse = QGuiApplication::applicationState() == Qt::ApplicationActive;
    setAttribute(Qt::WA_ShowWithoutActivating);
    show();
    if (window && isInUse)
        window->activateWindow(); // not every window system cares for the attribute
}

bool SideWindow::giveBack()
{
    if (!isActiveWindow() || !parentWidget())
        return false;
    parentWidget()->activateWindow();
    return true;
}

void SideWindow::setVisible(bool isVisible)
{
    const bool hadKeyboard = !isVisible && isActiveWindow();
    QDialog::setVisible(isVisible);
    if (hadKeyboard && parentWidget())
        parentWidget()->activateWindow();
}

void SideWindow::goRound()
{
    QList<SideWindow *> beside = parentWidget()->findChildren<SideWindow *>();
    beside.removeIf([](const SideWindow *other) { return !other->isVisible(); });
    qsizetype next = 0;
    for (qsizetype i = 0; i < beside.size(); ++i) {
        if (beside[i]->isActiveWindow())
            next = i + 1;
    }
    if (next < beside.size())
        beside[next]->reach();
    else
        parentWidget()->activateWindow();
}

} // namespace KEO
