#include "measureline.h"

#include <widgets/colormix.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace WaveMonitor {

MeasureLine::MeasureLine(QWidget *parent)
    : QWidget(parent), m_text(new QLabel), m_period(new QLineEdit)
{
    setObjectName(QStringLiteral("measureLine"));
    setSizePolicy(QSizePolicy::Ignored,
                  QSizePolicy::Fixed); // the window's width is not its business
    m_text->setObjectName(QStringLiteral("measureText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAccessibleName(tr("Measurements"));
    // The text takes what room there is and asks for none.
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_period->setObjectName(QStringLiteral("clockPeriod"));
    m_period->setPlaceholderText(tr("unknown"));
    m_period->setToolTip(tr("Period or frequency of the sample clock, such as 10 ns or 100 MHz. "
                            "Times are told once it is known."));
    m_period->setFixedWidth(
        m_period->fontMetrics().horizontalAdvance(QStringLiteral("9999999 ns")) +
        3 * m_period->fontMetrics().averageCharWidth());
    auto *label = new QLabel(tr("Clock period:"));
    label->setBuddy(m_period);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 1, 4, 1);
    layout->addWidget(m_text, 1);
    layout->addWidget(label);
    layout->addWidget(m_period);
    connect(m_period, &QLineEdit::editingFinished, this, &MeasureLine::enterPeriod);
    connect(m_period, &QLineEdit::textEdited, this, [this] { m_period->setPalette({}); });
}

void MeasureLine::setReadings(const Readings &readings)
{
    if (m_readings == readings)
        return;
    const bool isOtherPeriod = m_readings.period != readings.period;
    m_readings = readings;
    m_told.clear();
    if (isOtherPeriod)
        showPeriod();
    showText();
}

void MeasureLine::tell(const QString &text)
{
    m_told = text;
    showText();
}

void MeasureLine::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    showText();
}

void MeasureLine::showText()
{
    QString text = m_told;
    const QString all = text.isEmpty() ? readOut(m_readings, Detail::Frequency) : text;
    const QFontMetrics metrics = m_text->fontMetrics();
    if (text.isEmpty()) {
        for (const Detail detail : {Detail::Frequency, Detail::Time, Detail::Samples}) {
            text = readOut(m_readings, detail);
            if (metrics.horizontalAdvance(text) <= m_text->width())
                break;
        }
    }
    m_text->setText(metrics.elidedText(text, Qt::ElideRight, m_text->width()));
    m_text->setToolTip(m_text->text() == all ? QString() : all.toHtmlEscaped());
    m_text->setAccessibleDescription(all);
}

void MeasureLine::showPeriod()
{
    m_period->setPalette({});
    m_period->setText(
        m_readings.period
            ? QStringLiteral("%1 %2").arg(m_readings.period->number).arg(m_readings.period->unit)
            : QString());
}

void MeasureLine::enterPeriod()
{
    const QString text = m_period->text().trimmed();
    const std::optional<ClockPeriod> period = readClockPeriod(text);
    if (!text.isEmpty() && !period) {
        QPalette colors;
        colors.setColor(QPalette::Text, KEO::faultColor(palette().color(QPalette::Base)));
        m_period->setPalette(colors);
        tell(tr(
            "A clock period is a number and ps, ns, us, ms, s, kHz, MHz or GHz, such as 10 ns."));
        return;
    }
    if (!m_told.isEmpty())
        tell({});
    if (period == m_readings.period)
        showPeriod(); // perhaps written in another way
    else
        Q_EMIT periodEntered(period);
}

} // namespace WaveMonitor
