#pragma once

#include "readings.h"

#include <QWidget>

class QLabel;
class QLineEdit;

namespace WaveMonitor {

/// The line below the waves with what is measured, as much as there is room for, and a field for
/// the clock period.
class MeasureLine final : public QWidget
{
    Q_OBJECT

public:
    explicit MeasureLine(QWidget *parent = nullptr);

    void setReadings(const Readings &readings);
    /// Stands in for the readings until they change.
    void tell(const QString &text);

Q_SIGNALS:
    /// The user has told the period, or taken it away.
    void periodEntered(const std::optional<WaveMonitor::ClockPeriod> &period);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showText(); ///< as much of it as fits
    void enterPeriod();
    void showPeriod();

    QLabel *m_text;
    QLineEdit *m_period;
    Readings m_readings;
    QString m_told;
};

} // namespace WaveMonitor
