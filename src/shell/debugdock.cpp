#include "debugdock.h"

#include <base/console.h>

#include <QAction>
#include <QFont>
#include <QKeySequence>
#include <QMutex>
#include <QPlainTextEdit>
#include <QThread>
#include <QToolButton>
#include <QVBoxLayout>

#include <cstdlib>
#include <utility>

namespace KEO {

namespace {

constexpr int kMaxLines = 100'000; // older ones leave the pane; standard error has had them

/// A message with keys or names from outside can be millions of characters long, and the pane lays
/// a line out as a whole.
constexpr qsizetype kMaxShown = 4096;

thread_local bool isShowing = false;

QString shownPart(const QString &text)
{
    if (text.size() <= kMaxShown)
        return text;
    return DebugDock::tr("%1 ... (%2 characters)")
        .arg(text.left(kMaxShown), QString::number(text.size()));
}

} // namespace

/// What the message handler, a plain function, has to know.
struct DebugMessages
{
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);
    static void deliver(const QString &text);

    static inline QMutex mutex; // guards dock against its end while another thread posts to it
    static inline DebugDock *dock = nullptr;
    static inline QtMessageHandler previous = nullptr;
};

void DebugMessages::handle(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    static_cast<void>(writeText(stderr, text + u'\n'));
    if (!isShowing) {
        isShowing = true;
        deliver(text);
        isShowing = false;
    }
    if (type == QtFatalMsg)
        std::abort();
}

void DebugMessages::deliver(const QString &text)
{
    QMutexLocker lock(&mutex);
    if (!dock)
        return;
    if (dock->thread() != QThread::currentThread()) {
        QMetaObject::invokeMethod(
            dock, [receiver = dock, text] { receiver->show(text); }, Qt::QueuedConnection);
        return;
    }
    // The dock lives in this thread, so it can't end behind our back.
    lock.unlock();
    dock->show(text);
}

DebugDock::DebugDock(QWidget *parent)
    : QDockWidget(tr("Debug Message"), parent), m_pane(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("debugDock"));
    m_pane->setObjectName(QStringLiteral("debugPane"));
    m_pane->setReadOnly(true);
    m_pane->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont font(QStringLiteral("Courier"), 9);
    font.setStyleHint(QFont::Monospace); // where there is no such font
    m_pane->setFont(font);
    m_pane->setMaximumBlockCount(kMaxLines);
    auto *preview = new QAction(tr("Preview"), this);
    preview->setObjectName(QStringLiteral("previewAction"));
    preview->setShortcut(Qt::CTRL | Qt::Key_F12);
    preview->setToolTip(tr("Show what Start would send to the checked cores (%1)")
                            .arg(preview->shortcut().toString(QKeySequence::NativeText)));
    connect(preview, &QAction::triggered, this, &DebugDock::showPreview);
    addAction(preview); // for a dock of its own, apart from the window
    if (parent)
        parent->addAction(preview); // also while the dock is closed
    auto *button = new QToolButton(this);
    button->setObjectName(QStringLiteral("previewButton"));
    button->setDefaultAction(preview);
    auto *content = new QWidget(this);
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pane);
    layout->addWidget(button, 0, Qt::AlignLeft);
    setWidget(content);
    setMinimumSize(500, 300);
}

DebugDock::~DebugDock()
{
    stopListening();
}

void DebugDock::listen()
{
    const QMutexLocker lock(&DebugMessages::mutex);
    Q_ASSERT(!DebugMessages::dock);
    DebugMessages::dock = this;
    DebugMessages::previous = qInstallMessageHandler(&DebugMessages::handle);
}

void DebugDock::stopListening()
{
    const QMutexLocker lock(&DebugMessages::mutex);
    if (DebugMessages::dock != this)
        return;
    DebugMessages::dock = nullptr;
    const QtMessageHandler installed = qInstallMessageHandler(DebugMessages::previous);
    if (installed != &DebugMessages::handle)
        qInstallMessageHandler(installed); // someone's own, put in later
}

void DebugDock::setPreview(std::function<QString()> preview)
{
    m_preview = std::move(preview);
}

void DebugDock::showPreview()
{
    QDockWidget::show();
    const QString text = m_preview ? m_preview() : QString();
    m_pane->appendPlainText(text.isEmpty() ? tr("There is no core to start.") : text);
}

void DebugDock::show(const QString &text)
{
    if (text == QLatin1String("CLEAR "))
        m_pane->clear();
    else
        m_pane->appendPlainText(shownPart(text));
}

} // namespace KEO
