#pragma once

#include <QBitArray>
#include <QColor>
#include <QList>
#include <QPixmap>
#include <QWidget>

namespace WaveMonitor {

/// The whole window in one strip: what a row does, the trigger, the markers, and the part that the
/// wave view shows. A click or drag asks for another part. It has no focus: keys go to the places
/// of a window in the waves.
class OverviewStrip final : public QWidget
{
    Q_OBJECT

public:
    explicit OverviewStrip(QWidget *parent = nullptr);

    /// The row's samples are shared. A row of several members is drawn as a bus.
    void setRow(const QList<QBitArray> &members, int samples, const QColor &color);
    void setTrigger(int sample);
    /// The active one first.
    void setMarkers(const QList<int> &samples);
    /// The samples that show, with fractions.
    void setView(qreal first, qreal last);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// The user wants this sample in the middle.
    void asked(int sample);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    void drawRow();
    void ask(qreal x);
    [[nodiscard]] qreal xOf(qreal sample) const;
    [[nodiscard]] QRectF viewFrame() const;

    QList<QBitArray> m_members;
    int m_samples = 0;
    QColor m_color;
    int m_trigger = 0;
    QList<int> m_markers;
    qreal m_first = 0.0;
    qreal m_last = 0.0;
    qreal m_grip = 0.0; ///< pixels from the middle of the frame to where it was taken
    QPixmap m_picture;  ///< of the row, for the present width; null when it has to be drawn
};

} // namespace WaveMonitor
