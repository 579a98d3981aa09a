#include "resultoutput.h"

#include <base/console.h>

#include <QCoreApplication>
#include <QJsonDocument>

#include <cerrno>
#include <cstdio>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ResultOutput)
};

void tell(const QString &message)
{
    static_cast<void>(writeText(stderr, QStringLiteral("signalscope-capture: %1\n").arg(message)));
}

} // namespace

ExitStatus statusOf(Error::Kind kind)
{
    switch (kind) {
    case Error::Usage:
        return ExitStatus::Usage;
    case Error::Link:
        return ExitStatus::NoServer;
    case Error::File:
    case Error::Format:
    case Error::Limit:
        break;
    }
    return ExitStatus::FileError;
}

void ResultOutput::line(const QString &text)
{
    if (m_style == ResultStyle::Lines)
        print(text);
}

ExitStatus ResultOutput::finish(TaskResult result)
{
    if (!result.message.isEmpty())
        tell(result.message);
    if (isJson()) {
        if (result.hasEnvelope) {
            result.document.insert("status", int(result.status));
            if (!result.message.isEmpty())
                result.document.insert("message", result.message);
        }
        print(QString::fromUtf8(QJsonDocument(result.document).toJson()).trimmed());
    }
    // A script that gets no result, or half of one, must not take the run for a good one.
    const bool isResult =
        result.status == ExitStatus::Captured || result.status == ExitStatus::Different;
    if (m_fault.isEmpty() || !isResult)
        return result.status;
    tell(Text::tr("The result can not be printed: %1").arg(m_fault));
    return ExitStatus::FileError;
}

void ResultOutput::print(const QString &text)
{
    if (!writeText(stdout, text + u'\n') && m_fault.isEmpty())
        m_fault = qt_error_string(errno);
}

} // namespace KEO
