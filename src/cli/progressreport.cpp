#include "progressreport.h"

#include <base/console.h>

#include <QCoreApplication>
#include <QTimer>

#include <limits>

namespace KEO {

namespace {

constexpr int kTerminalTick = 1000;
constexpr int kPlainTick = 10000;
constexpr int kBarWidth = 30;
constexpr int kLineEnd = 12; // characters that show even if the terminal is narrow

void write(const QString &text)
{
    static_cast<void>(writeText(stderr, text)); // nobody else could be told
}

/// What a line may hold that a return can take back: one that wraps stays where it is.
int lineRoom()
{
    return terminalWidth(stderr).value_or(std::numeric_limits<int>::max()) - 1;
}

/// With the end, which counts, and dots for what there is no room for.
QString fitted(const QString &text)
{
    const int room = lineRoom();
    if (text.size() <= room)
        return text;
    const QString dots = QStringLiteral("...");
    const int end = qBound(0, room - int(dots.size()), kLineEnd);
    return text.left(qMax(0, room - int(dots.size()) - end)) + dots.left(room) + text.right(end);
}

} // namespace

ProgressReport::Style ProgressReport::styleFor(bool quiet)
{
    if (quiet)
        return Style::Quiet;
    return isTerminal(stderr) ? Style::Terminal : Style::Plain;
}

ProgressReport::ProgressReport(Style style, QObject *parent)
    : QObject(parent), m_style(style), m_tick(new QTimer(this))
{
    m_tick->setInterval(style == Style::Terminal ? kTerminalTick : kPlainTick);
    connect(m_tick, &QTimer::timeout, this, &ProgressReport::drawWait);
}

ProgressReport::~ProgressReport()
{
    finish();
}

void ProgressReport::waitFor(const QString &what)
{
    if (m_style == Style::Quiet)
        return;
    m_what = what;
    m_lastTenth = -1;
    m_waiting.start();
    m_tick->start();
    drawLine(tr("Waiting for %1").arg(what));
}

void ProgressReport::drawWait()
{
    drawLine(tr("Waiting for %1 (%2 s)").arg(m_what, QString::number(m_waiting.elapsed() / 1000)));
}

void ProgressReport::readSections(const QString &what, int done, int total)
{
    if (m_style == Style::Quiet || total <= 0)
        return;
    m_tick->stop();
    const int percent = int(qint64(done) * 100 / total);
    if (m_style == Style::Terminal) {
        const int filled = int(qint64(done) * kBarWidth / total);
        drawLine(tr("Reading %1 [%2%3] %4 %")
                     .arg(what, QString(filled, u'#'), QString(kBarWidth - filled, u'.'),
                          QString::number(percent)));
        return;
    }
    if (percent / 10 == m_lastTenth)
        return;
    m_lastTenth = percent / 10;
    drawLine(tr("Reading %1: %2 %").arg(what, QString::number(percent)));
}

void ProgressReport::say(const QString &line)
{
    if (m_style == Style::Quiet)
        return;
    finish();
    write(line + u'\n');
}

void ProgressReport::warn(const QString &line)
{
    m_warnings.append(line);
    finish();
    write(QCoreApplication::applicationName() + QStringLiteral(": ") + line + u'\n');
}

void ProgressReport::finish()
{
    m_tick->stop();
    m_lastTenth = -1;
    clearLine();
}

void ProgressReport::drawLine(const QString &text)
{
    if (m_style == Style::Plain) {
        write(text + u'\n');
        return;
    }
    const QString line = fitted(text);
    // Blanks cover what a longer line before left behind.
    write(u'\r' + line.leftJustified(qMin(m_lineLength, lineRoom())));
    m_lineLength = int(line.size());
}

void ProgressReport::clearLine()
{
    if (m_lineLength == 0)
        return;
    write(u'\r' + QString(qMin(m_lineLength, lineRoom()), u' ') + u'\r');
    m_lineLength = 0;
}

} // namespace KEO
