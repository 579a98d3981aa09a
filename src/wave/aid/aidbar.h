#pragma once

#include <QString>
#include <QWidget>

class QAction;
class QLabel;

namespace WaveMonitor {

/// The bar between the rows beside those of the window and the waves: a sentence and the ways from
/// hit to hit. Dragged, it gives the rows above more room or less.
class AidBar final : public QWidget
{
    Q_OBJECT

public:
    /// The buttons do what these do. Both are borrowed.
    AidBar(QAction *previous, QAction *next, QWidget *parent = nullptr);

    void setText(const QString &text);

Q_SIGNALS:
    /// By that many pixels, down is more.
    void dragged(int pixels);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    void showText();

    QLabel *m_label; ///< child
    QString m_text;
    int m_grip = 0; ///< pixels from the bar's top to where it was taken
};

} // namespace WaveMonitor
