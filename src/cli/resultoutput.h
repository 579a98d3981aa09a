#pragma once

#include "exitstatus.h"

#include <base/result.h>

#include <QJsonObject>
#include <QString>

namespace KEO {

/// How a task of the capture program ended.
struct TaskResult
{
    ExitStatus status = ExitStatus::Captured;
    QString message;         ///< a sentence for the user; may be empty
    QJsonObject document;    ///< what --json prints, without status and message
    bool hasEnvelope = true; ///< the document gets `status` and, if there is one, `message`
};

/// The status that an error gives the program.
[[nodiscard]] ExitStatus statusOf(Error::Kind kind);

/// What a task prints on standard output.
enum class ResultStyle {
    Lines,
    Document, ///< one at the end
    Nothing   ///< the samples themselves go there
};

/// Standard output, and the last words on standard error.
class ResultOutput final
{
public:
    explicit ResultOutput(ResultStyle style) : m_style(style) {}

    [[nodiscard]] bool isJson() const { return m_style == ResultStyle::Document; }
    /// A line of the result; nothing in another style.
    void line(const QString &text);
    /// Tells how the task ended, and returns what the program exits with: of a result that did not
    /// reach its reader, FileError.
    [[nodiscard]] ExitStatus finish(TaskResult result);

private:
    void print(const QString &text);

    ResultStyle m_style;
    QString m_fault; ///< why standard output did not take everything; else empty
};

} // namespace KEO
