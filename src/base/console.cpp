#include "console.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <fcntl.h>
#include <io.h>
#else
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace KEO {

namespace {

bool mayOrder(QChar c)
{
    return c.category() == QChar::Other_Control && !QStringView(u"\n\r\t").contains(c);
}

} // namespace

void holdStandardStreams()
{
#ifndef Q_OS_WIN
    // The lowest number that is free is the one that open() takes. What only writes has no input
    // to give, and what only reads refuses output, so that a result that goes nowhere is a fault.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF)
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
#endif
}

bool isTerminal(std::FILE *stream)
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) != 0;
#endif
}

std::optional<int> terminalWidth([[maybe_unused]] std::FILE *stream)
{
#ifndef Q_OS_WIN
    winsize size{};
    if (ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
#endif
    return {};
}

void sendRawBytes([[maybe_unused]] std::FILE *stream)
{
#ifdef Q_OS_WIN
    _setmode(_fileno(stream), _O_BINARY);
#endif
}

bool writeText(std::FILE *stream, const QString &text)
{
    QString shown = text;
    if (isTerminal(stream))
        std::ranges::replace_if(shown, mayOrder, QChar(QChar::ReplacementCharacter));
    const QByteArray bytes = shown.toLocal8Bit();
    errno = 0;
    const size_t written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    return std::fflush(stream) == 0 && written == size_t(bytes.size());
}

void printMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    static_cast<void>(writeText(stderr, qFormatLogMessage(type, context, text) + u'\n'));
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace KEO
