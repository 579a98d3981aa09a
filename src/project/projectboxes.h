#pragma once

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QWidget>

namespace KEO {

/// The modal boxes of a project over its window. While one shows, the project may be closed or
/// deleted, and this with it.
class ProjectBoxes final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The window's title of now stays that of boxes, when the window later names its file too.
    void setWindow(QWidget *window);
    /// Null before the first time, and when the window is gone.
    [[nodiscard]] QWidget *window() const { return m_window; }

    /// Does nothing while a box with the same text is open, so that a server which sends nonsense
    /// round by round does not pile them up.
    void showError(const QString &text);
    void showWarning(const QString &text);
    /// Under the window's title, without the file; no box without a text.
    void showInformation(const QString &text);

private:
    QPointer<QWidget> m_window;
    QString m_title;
    QSet<QString> m_openErrors; // texts of the boxes that are open
};

} // namespace KEO
