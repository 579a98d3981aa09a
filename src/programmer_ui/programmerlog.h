#pragma once

#include <QStringList>
#include <QTextBrowser>

namespace KEO {

/// What the programmer says, a time before each message, errors and warnings in their colours.
/// Holds the latest kMaxLines lines. Messages are plain text, whatever is in them.
class ProgrammerLog final : public QTextBrowser
{
    Q_OBJECT

public:
    static constexpr int kMaxLines = 5000;

    explicit ProgrammerLog(QWidget *parent = nullptr);

    /// Adds the messages that are not empty, each in one line, and a blank line after them.
    void addMessages(const QStringList &messages);

protected:
    /// The colours follow the theme.
    void changeEvent(QEvent *event) override;

private:
    enum Kind { Info, Warning, Failure };

    void addLine(Kind kind, const QString &line);
    [[nodiscard]] QColor color(Kind kind) const;
    void recolor();
};

} // namespace KEO
