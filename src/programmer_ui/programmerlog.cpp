#include "programmerlog.h"

#include "legiblecolor.h"

#include <QEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTime>

namespace KEO {

ProgrammerLog::ProgrammerLog(QWidget *parent) : QTextBrowser(parent)
{
    setUndoRedoEnabled(false);
    setOpenLinks(false);
    document()->setMaximumBlockCount(kMaxLines);
}

void ProgrammerLog::addMessages(const QStringList &messages)
{
    QScrollBar *bar = verticalScrollBar();
    const bool wasAtEnd = bar->value() == bar->maximum();
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    bool hasLine = false;
    QTextCursor edit(document());
    edit.beginEditBlock(); // one layout for all lines
    for (const QString &text : messages) {
        const QString message = text.simplified();
        if (message.isEmpty())
            continue;
        hasLine = true;
        if (message.contains(QLatin1String("Error: ")))
            addLine(Failure, u'[' + time + u']' + message);
        else if (message.contains(QLatin1String("Warn: ")))
            addLine(Warning, u'[' + time + u']' + message);
        else
            addLine(Info, u'[' + time + QLatin1String("]Info: ") + message);
    }
    if (hasLine)
        addLine(Info, {});
    edit.endEditBlock();
    if (wasAtEnd)
        bar->setValue(bar->maximum()); // who reads further up is left in peace
}

/// At the end of the text, wherever the user's cursor stands.
void ProgrammerLog::addLine(Kind kind, const QString &line)
{
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    QTextCharFormat format;
    format.setForeground(color(kind));
    if (!document()->isEmpty())
        cursor.insertBlock({}, format);
    cursor.insertText(line, format);
    cursor.block().setUserState(kind);
}

QColor ProgrammerLog::color(Kind kind) const
{
    const QColor colors[] = {Qt::blue, Qt::darkYellow, Qt::red};
    return legibleColor(colors[kind], palette().color(QPalette::Base));
}

void ProgrammerLog::changeEvent(QEvent *event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        recolor();
}

void ProgrammerLog::recolor()
{
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        QTextCursor cursor(block);
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        QTextCharFormat format;
        format.setForeground(color(block.userState() < Info ? Info : Kind(block.userState())));
        cursor.setCharFormat(format);
    }
}

} // namespace KEO
