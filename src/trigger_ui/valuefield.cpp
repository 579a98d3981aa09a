#include "valuefield.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>

#include <memory>

namespace KEO {

bool ValueField::takesWhole() const
{
    return hasSelectedText() ? selectionStart() == 0 && selectionLength() >= displayText().size()
                             : cursorPosition() == 0;
}

void ValueField::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste))
        Q_EMIT pasteAsked(QGuiApplication::clipboard()->text());
    else
        QLineEdit::keyPressEvent(event);
}

void ValueField::contextMenuEvent(QContextMenuEvent *event)
{
    const std::unique_ptr<QMenu> menu(createStandardContextMenu());
    if (auto *paste = menu->findChild<QAction *>(QStringLiteral("edit-paste"))) {
        disconnect(paste, &QAction::triggered, nullptr, nullptr);
        connect(paste, &QAction::triggered, this,
                [this] { Q_EMIT pasteAsked(QGuiApplication::clipboard()->text()); });
    }
    menu->exec(event->globalPos());
}

void ValueField::mouseReleaseEvent(QMouseEvent *event)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (event->button() != Qt::MiddleButton || !clipboard->supportsSelection()) {
        QLineEdit::mouseReleaseEvent(event);
        return;
    }
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    Q_EMIT pasteAsked(clipboard->text(QClipboard::Selection));
}

void ValueField::dropEvent(QDropEvent *event)
{
    if (!event->mimeData()->hasText()) {
        QLineEdit::dropEvent(event);
        return;
    }
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT pasteAsked(event->mimeData()->text());
}

} // namespace KEO
