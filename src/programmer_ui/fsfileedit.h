#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;
class QToolButton;

namespace KEO {

/// A field for the path of an fs file, with a button that opens a file dialog.
class FsFileEdit final : public QWidget
{
    Q_OBJECT

public:
    explicit FsFileEdit(QWidget *parent = nullptr);

    [[nodiscard]] QString path() const;
    void setPath(const QString &path);
    /// Whether the user has typed since then.
    [[nodiscard]] bool isModified() const;
    /// Shows the path and no more.
    void setReadOnly(bool isReadOnly);

Q_SIGNALS:
    /// The user has chosen a file in the dialog, or gone on to another part of the window.
    void finished();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void browse();

    QLineEdit *m_edit;     // child
    QToolButton *m_button; // child
};

} // namespace KEO
