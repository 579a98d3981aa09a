#pragma once

#include "exitstatus.h"

#include <QObject>

#include <optional>

class QTimer;

namespace KEO {

/// Turns Ctrl-C (and a polite kill) into a Qt signal, so that a capture can be ended in good order.
/// One instance at a time.
class Interruption final : public QObject
{
    Q_OBJECT

public:
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
        void (*m_onInterrupt)(int); ///< what stood before
        void (*m_onTerminate)(int);
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
