#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QString>

namespace Sim {

/// Where a server says what happens: complaints on standard error and in the log file, the packets
/// in the log file alone. Lines begin with the seconds since the start.
class Logbook final
{
public:
    explicit Logbook(QString program);

    /// Appends to a file from now on. False, after a complaint, when it can't be opened.
    bool openFile(const QString &path);
    [[nodiscard]] bool hasFile() const { return m_file.isOpen(); }

    void complain(const QString &text);
    void note(const QString &text);

private:
    void writeLine(const QString &text);

    QString m_program;
    QFile m_file;
    QElapsedTimer m_clock;
};

} // namespace Sim
