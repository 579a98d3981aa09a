#pragma once

#include "exitstatus.h"

#include <QObject>

#include <array>
#include <csignal>
#include <optional>

class QTimer;

namespace KEO {

/// Turns Ctrl-C, a polite kill and the end of the terminal into a Qt signal, so that a capture can
/// be ended in good order. One instance at a time.
class Interruption final : public QObject
{
    Q_OBJECT

public:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

    /// Shields the child processes that are started while it lives: a terminal sends Ctrl-C to all
    /// of them, timeout(1) its signal, and a server that ends first could not be told to close the
    /// device.
    class ChildShield final
    {
    public:
        ChildShield();
        ChildShield(const ChildShield &) = delete;
        ChildShield &operator=(const ChildShield &) = delete;
        ~ChildShield();

    private:
        std::array<void (*)(int), kSignals.size()> m_before; ///< by the place in kSignals
    };

    explicit Interruption(QObject *parent = nullptr);
    ~Interruption() override;

    /// The status to exit with once a signal has arrived.
    static std::optional<ExitStatus> pending();
    /// Signals so far.
    static int count();

Q_SIGNALS:
    void interrupted();

private:
    QTimer *m_poll; // owned by the object tree
};

} // namespace KEO
