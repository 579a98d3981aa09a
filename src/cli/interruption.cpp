#include "interruption.h"

#include <QTimer>

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
{
    for (size_t i = 0; i < kSignals.size(); ++i)
        m_before[i] = std::signal(kSignals[i], SIG_IGN);
}

Interruption::ChildShield::~ChildShield()
{
    for (size_t i = 0; i < kSignals.size(); ++i)
        std::signal(kSignals[i], m_before[i]);
}

Interruption::Interruption(QObject *parent) : QObject(parent), m_poll(new QTimer(this))
{
    received = 0;
    signalCount = 0;
    for (const int number : kSignals) {
        // nohup(1) has it ignored, for a run that goes on when the terminal is gone.
        if (std::signal(number, remember) == SIG_IGN && number == SIGHUP)
            std::signal(number, SIG_IGN);
    }
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
    if (received != 0)
        return; // the program is on its way out with a status that tells why; let it come out
    for (const int number : kSignals) {
        if (std::signal(number, SIG_DFL) == SIG_IGN)
            std::signal(number, SIG_IGN);
    }
}

std::optional<ExitStatus> Interruption::pending()
{
    if (received == 0)
        return std::nullopt;
    if (received == SIGHUP)
        return ExitStatus::HungUp;
    return received == SIGTERM ? ExitStatus::Terminated : ExitStatus::Interrupted;
}

int Interruption::count()
{
    return signalCount;
}

} // namespace KEO
