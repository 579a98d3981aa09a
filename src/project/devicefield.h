#pragma once

#include <QString>
#include <QToolButton>

class QAction;
class QLabel;

namespace KEO {

class ElidedLabel;

/// The device and the cable in the status line, as a button: text that gives way, with a sign in
/// front where something is wrong, and an arrow behind that promises a menu.
class DeviceField final : public QToolButton
{
    Q_OBJECT

public:
    explicit DeviceField(QWidget *parent = nullptr);

    /// What a click does, as long as it is enabled. Borrowed; outlives this.
    void setClickAction(QAction *action);
    /// With a warning sign if \a isWarning; the tool tip adds \a why, which may be empty.
    void showState(const QString &text, bool isWarning, const QString &why);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void updateTip();

    const QAction *m_action = nullptr; // borrowed
    QString m_why;
    QLabel *m_sign;      // child
    ElidedLabel *m_text; // child
};

} // namespace KEO
