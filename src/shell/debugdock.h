#pragma once

#include <QDockWidget>

#include <QString>

#include <functional>

class QPlainTextEdit;

namespace KEO {

/// Shows the program's debug messages. While it listens, it stands in for the message handler of
/// the process: every message goes to standard error, one a line, and to the pane. The message
/// "CLEAR " (with its blank) empties the pane instead. Messages may come from any thread; those
/// that showing a message brings about are not shown themselves. One dock listens at a time.
class DebugDock final : public QDockWidget
{
    Q_OBJECT

public:
    explicit DebugDock(QWidget *parent = nullptr);
    ~DebugDock() override; ///< stops listening

    void listen();
    /// Lines that the Preview button, and its key in the window, add to the pane. \a preview makes
    /// them each time; it gives none if there is nothing to start.
    void setPreview(std::function<QString()> preview);

    /// Puts the handler back that was there before listen.
    void stopListening();

private:
    friend struct DebugMessages;
    void show(const QString &text);
    void showPreview();

    QPlainTextEdit *m_pane; // owned by the object tree
    std::function<QString()> m_preview;
};

} // namespace KEO
