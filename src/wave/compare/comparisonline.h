#pragma once

#include <QFrame>
#include <QString>

#include <optional>

class QAction;
class QLabel;

namespace WaveMonitor {

class WindowComparison;

/// What two windows differ in, in a sentence or two. \a other names the second one, B.
[[nodiscard]] QString comparisonText(const WindowComparison &comparison, const QString &other,
                                     int triggerInA);
/// Where the difference at a sample of A is, and which signals begin to differ there, some of them.
[[nodiscard]] QString differenceText(const WindowComparison &comparison, qsizetype sample,
                                     int triggerInA);

/// The line between two windows: text and buttons.
class ComparisonLine final : public QFrame
{
    Q_OBJECT

public:
    /// The buttons do what these do.
    ComparisonLine(QAction *previous, QAction *next, QAction *close, QWidget *parent = nullptr);

    void setText(const QString &text);

private:
    QLabel *m_label; ///< child
};

} // namespace WaveMonitor
