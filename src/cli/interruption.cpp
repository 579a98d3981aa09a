#include "interruption.h"

#include <QTimer>

#include <csignal>

namespace KEO {

namespace {

volatile std::sig_atomic_t received = 0;
volatile std::sig_atomic_t signalCount = 0;

void remember(int number)
{
    received = number;
    signalCount = signalCount + 1;
}

// Felt as immediate, and no load to speak of.
constexpr int kPollInterval = 50;

} // namespace

/// What is ignored stays ignored in a new process; a handler does not stay.
Interruption::ChildShield::ChildShield()
    : m_onInterrupt(std::signal(SIGINT, SIG_IGN)), m_onTerminate(std::signal(SIGTERM, SIG_IGN))
{
}

Interruption::ChildShield::~ChildShield()
{
    std::signal(SIGINT, m_onInterrupt);
    std::signal(SIGTERM, m_onTerminate);
}

Interruption::Interruption(QObject *parent) : QObject(parent), m_poll(new QTimer(this))
{
    received = 0;
    signalCount = 0;
    std::signal(SIGINT, remember);
    std::signal(SIGTERM, remember);
    // A signal handler may only set a flag; the event loop looks at it.
    connect(m_poll, &QTimer::timeout, this, [this] {
        if (received == 0)
            return;
        m_poll->stop();
        Q_EMIT interrupted();
    });
    m_poll->start(kPollInterval);
}

Interruption::~Interruption()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

std::optional<ExitStatus> Interruption::pending()
{
    if (received == 0)
        return std::nullopt;
    return received == SIGTERM ? ExitStatus::Terminated : ExitStatus::Interrupted;
}

int Interruption::count()
{
    return signalCount;
}

} // namespace KEO
