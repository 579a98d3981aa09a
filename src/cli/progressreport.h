#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>

class QTimer;

namespace KEO {

/// Tells on standard error what the program waits for and how far a read is: one line that is
/// redrawn on a terminal, plain lines elsewhere. Says nothing when quiet.
class ProgressReport final : public QObject
{
    Q_OBJECT

public:
    enum class Style { Quiet, Terminal, Plain };

    /// Quiet if asked, else by what standard error is connected to.
    static Style styleFor(bool quiet);

    explicit ProgressReport(Style style, QObject *parent = nullptr);
    ~ProgressReport() override;

    /// Starts to tell that the program waits, with the time that it has waited so far.
    void waitFor(const QString &what);
    /// \a done of \a total sections have been read.
    void readSections(const QString &what, int done, int total);
    /// A line of its own; ends waiting.
    void say(const QString &line);
    /// A line that is told even if quiet, and kept: what is told on standard output is not all.
    void warn(const QString &line);
    [[nodiscard]] const QStringList &warnings() const { return m_warnings; }
    /// Ends waiting and leaves the terminal at the start of a line.
    void finish();

private:
    void drawWait();
    void drawLine(const QString &text);
    void clearLine();

    const Style m_style;
    QTimer *m_tick; // owned by the object tree
    QElapsedTimer m_waiting;
    QString m_what;
    QStringList m_warnings;
    int m_lineLength = 0; // characters on the terminal's current line
    int m_lastTenth = -1; // plain lines tell every tenth of a read
};

} // namespace KEO
