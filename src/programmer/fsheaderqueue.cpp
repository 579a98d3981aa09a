#include "fsheaderqueue.h"

#include <QPointer>

#include <utility>

namespace KEO {

namespace {

// How long the window may stand still for a header, in ms: at once when a file is chosen, which is
// enough for all but the largest, and in each turn of the event loop after that.
constexpr int kFirstSlice = 30;
constexpr int kSlice = 10;

} // namespace

struct FsHeaderQueue::Reading
{
    Reading(const QString &file, Cause why) : path(file), cause(why), reader(file) {}

    QString path;
    Cause cause;
    FsHeaderReader reader;
};

FsHeaderQueue::FsHeaderQueue(QObject *parent) : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &FsHeaderQueue::readOn);
}

FsHeaderQueue::~FsHeaderQueue() = default;

bool FsHeaderQueue::read(const QString &path, Cause cause)
{
    std::erase_if(m_readings, [&](const auto &reading) { return reading->path == path; });
    auto reading = std::make_unique<Reading>(path, cause);
    if (!reading->reader.isOpen())
        return false;
    if (reading->reader.read(kFirstSlice)) {
        Q_EMIT headerRead(reading->path, reading->reader.header(), cause);
        return true;
    }
    m_readings.push_back(std::move(reading));
    m_timer.start(0);
    return true;
}

void FsHeaderQueue::readOn()
{
    if (!m_readings.empty() && m_readings.front()->reader.read(kSlice)) {
        const std::unique_ptr<Reading> done = std::move(m_readings.front());
        m_readings.erase(m_readings.begin());
        const QPointer<FsHeaderQueue> self(this);
        Q_EMIT headerRead(done->path, done->reader.header(), done->cause);
        if (!self)
            return;
    }
    if (m_readings.empty())
        m_timer.stop();
}

void FsHeaderQueue::finish()
{
    const QPointer<FsHeaderQueue> self(this);
    for (const auto &reading : std::exchange(m_readings, {})) {
        reading->reader.read(-1);
        if (self)
            Q_EMIT headerRead(reading->path, reading->reader.header(), reading->cause);
    }
}

} // namespace KEO
