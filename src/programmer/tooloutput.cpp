#include "tooloutput.h"

#include "keyedline.h"

#include <QRegularExpression>

#include <utility>

namespace KEO {

namespace {

constexpr qsizetype kSlack = ToolOutput::kMaxLines / 4; // lines are dropped so many at a time
constexpr qsizetype kWord = 5;                          // letters of "Error"

bool containsError(QByteArrayView bytes)
{
    return bytes.indexOf("Error") >= 0 || bytes.indexOf("error") >= 0;
}

bool isProgressBar(const QString &text)
{
    static const QRegularExpression bar(QStringLiteral("\\[#* *\\]"));
    return bar.match(text).hasMatch() && !containsError(text.toUtf8());
}

QString cutBehind(const QString &text, QLatin1String mark)
{
    const qsizetype at = text.indexOf(mark, 0, Qt::CaseInsensitive);
    return at < 0 ? text : text.mid(at + mark.size());
}

void takeLine(const QString &line, ScannedDevice &device)
{
    if (line.contains(QLatin1String("Family:")))
        device.family = valueOf(line);
    else if (line.contains(QLatin1String("Name:")))
        device.name = valueOf(line);
    else if (line.contains(QLatin1String("ID:")))
        device.idCode = cutBehind(valueOf(line), QLatin1String("0x"));
}

} // namespace

void ToolOutput::append(QByteArrayView bytes)
{
    lookForError(bytes);
    while (!bytes.isEmpty()) {
        if (std::exchange(m_hasReturn, false) && bytes.front() != '\n')
            endOverwritten();
        qsizetype end = 0;
        while (end < bytes.size() && bytes[end] != '\n' && bytes[end] != '\r')
            ++end;
        takeText(bytes.first(end));
        if (end == bytes.size())
            return;
        if (bytes[end] == '\n')
            endLine();
        else
            m_hasReturn = true;
        bytes = bytes.sliced(end + 1);
    }
}

void ToolOutput::finish()
{
    m_hasReturn = false;
    if (!m_line.isEmpty())
        endLine();
}

/// A word may be cut in two by a piece's end.
void ToolOutput::lookForError(QByteArrayView bytes)
{
    if (m_saysError)
        return;
    m_tail.append(bytes.first(qMin(bytes.size(), kWord - 1)));
    m_saysError = containsError(m_tail) || containsError(bytes);
    m_tail = bytes.size() < kWord ? m_tail.right(kWord - 1) : bytes.last(kWord - 1).toByteArray();
}

void ToolOutput::takeText(QByteArrayView bytes)
{
    m_line.append(bytes.first(qMin(bytes.size(), kMaxLine - m_line.size())));
}

void ToolOutput::endLine()
{
    // Behind a return that ended a line of its own, a line feed ends nothing more.
    if (std::exchange(m_isContinued, false) && m_line.isEmpty())
        return;
    keep(QString::fromLocal8Bit(m_line));
    m_line.resize(0);
}

void ToolOutput::endOverwritten()
{
    m_isContinued = true;
    const QString text = QString::fromLocal8Bit(m_line);
    m_line.resize(0);
    if (!text.simplified().isEmpty() && !isProgressBar(text))
        keep(text);
}

void ToolOutput::keep(const QString &line)
{
    m_lines.append(line);
    if (m_lines.size() < kMaxLines + kSlack)
        return;
    m_lines.remove(0, kSlack);
    m_dropped += kSlack;
}

ScanReport parseScan(const QStringList &lines)
{
    constexpr qsizetype kLinesBehind = 3;
    ScanReport report;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!lines.at(i).contains(QLatin1String("Device Info:"))) {
            const QString message = lines.at(i).simplified();
            if (!message.isEmpty())
                report.messages.append(message);
            continue;
        }
        ScannedDevice device;
        for (const QString &line : lines.mid(i + 1, kLinesBehind))
            takeLine(line, device);
        report.devices.append(device);
        i += kLinesBehind;
    }
    return report;
}

QStringList withoutProgressBars(const QStringList &lines)
{
    static const QRegularExpression bar(QStringLiteral("\\[#+ ?\\]"));
    QStringList kept;
    for (const QString &line : lines) {
        if (!bar.match(line).hasMatch() || containsError(line.toUtf8()))
            kept.append(line);
    }
    return kept;
}

} // namespace KEO
