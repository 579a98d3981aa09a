#include "logbook.h"

#include <cstdio>

namespace Sim {

Logbook::Logbook(QString program) : m_program(std::move(program))
{
    m_clock.start();
}

bool Logbook::openFile(const QString &path)
{
    m_file.setFileName(path);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        return true;
    complain(QStringLiteral("the log %1 can't be written: %2").arg(path, m_file.errorString()));
    return false;
}

void Logbook::complain(const QString &text)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(m_program), qPrintable(text));
    std::fflush(stderr);
    writeLine(QStringLiteral("! ") + text);
}

void Logbook::note(const QString &text)
{
    writeLine(text);
}

void Logbook::writeLine(const QString &text)
{
    if (!m_file.isOpen())
        return;
    const QString line = QStringLiteral("%1 %2 %3\n")
                             .arg(double(m_clock.elapsed()) / 1000.0, 10, 'f', 3)
                             .arg(m_program, text);
    m_file.write(line.toUtf8());
    m_file.flush(); // a log is read while the server runs, and after it was killed
}

} // namespace Sim
