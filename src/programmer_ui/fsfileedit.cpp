#include "fsfileedit.h"

#include <QApplication>
#include <QFileDialog>
#include <QFocusEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QToolButton>

namespace KEO {

FsFileEdit::FsFileEdit(QWidget *parent)
    : QWidget(parent), m_edit(new QLineEdit), m_button(new QToolButton)
{
    m_edit->setObjectName(QStringLiteral("fsFileName"));
    m_button->setObjectName(QStringLiteral("browseFsFile"));
    m_button->setText(QStringLiteral("..."));
    m_button->setToolTip(tr("Choose a file"));
    m_button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored); // a table's row is low
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_edit);
    layout->addWidget(m_button);
    setFocusProxy(m_edit);
    setAutoFillBackground(true);
    m_edit->installEventFilter(this);
    m_button->installEventFilter(this);
    connect(m_button, &QToolButton::clicked, this, &FsFileEdit::browse);
}

QString FsFileEdit::path() const
{
    return m_edit->text();
}

void FsFileEdit::setPath(const QString &path)
{
    m_edit->setText(path);
}

bool FsFileEdit::isModified() const
{
    return m_edit->isModified();
}

void FsFileEdit::setReadOnly(bool isReadOnly)
{
    m_edit->setReadOnly(isReadOnly);
    m_button->setEnabled(!isReadOnly);
}

void FsFileEdit::browse()
{
    const QPointer<FsFileEdit> self(this);
    const QString path = QFileDialog::getOpenFileName(this, tr("Open Fs File..."), this->path(),
                                                      tr("TARNO Fs File (*.fs)"));
    if (!self || path.isEmpty())
        return;
    setPath(path);
    Q_EMIT finished();
}

/// The focus is that of the field or of the button. A dialog or another window only borrows it.
bool FsFileEdit::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        const bool isBorrowed =
            reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
        if (!isBorrowed && !isAncestorOf(QApplication::focusWidget()))
            Q_EMIT finished();
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace KEO
