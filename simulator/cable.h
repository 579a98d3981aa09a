#pragma once

#include "boardfile.h"
#include "chainstate.h"
#include "devicemodel.h"
#include "packet.h"

#include <memory>

namespace Sim {

/// What a packet is for, as the board file names it: the "OPRATE" of a read or write, else the
/// "CMD".
QString operationOf(const Packet &packet);

/// One readable line for a packet of either direction.
QString describe(const Packet &packet);

/// A cable with its chain of devices: answers packets, and knows nothing of sockets. One client at
/// a time holds the device open.
class Cable final
{
public:
    enum OpenResult { Opened = 0, OpenFailed = 1, NotProgrammed = -20 };

    /// Builds the device model, which reads the description and the stimulus; does so for a device
    /// without bitstream as well, to tell early what is wrong with them. Sentences about what is
    /// odd but workable are appended to \a notes.
    static Outcome<std::unique_ptr<Cable>> build(const CableSetup &setup,
                                                 const Core::Report &report, QStringList *notes);

    /// The reply to a packet, or nothing when there is none. \a client tells clients apart;
    /// \a forcedResult stands in for the result of an "OPEN".
    std::optional<Packet> handle(int client, const Packet &packet, std::optional<int> forcedResult);
    /// Takes over what a programmer did to the device with the analyzer: it lost its bitstream, or
    /// got one, and then its cores start anew.
    void follow(const ChainState &state);
    /// The client is gone; what it held open is closed.
    void clientLeft(int client);

    [[nodiscard]] bool isArmed() const { return m_device && m_device->isArmed(); }
    void advance(qint64 samples);
    /// Null when no programmed device holds an analyzer.
    [[nodiscard]] const DeviceModel *device() const { return m_device.get(); }

private:
    Cable(const CableSetup &setup, Core::Report report);

    [[nodiscard]] int openResult(int client, const Packet &packet) const;
    void write(int client, const Packet &packet);
    Packet read(int client, const Packet &packet);
    void reportNotOpen(const QString &packet);

    CableSetup m_setup;
    Core::Report m_report;
    std::unique_ptr<DeviceModel> m_device; ///< null while it has no bitstream
    int m_loads = 0;                       ///< those that m_device has seen, see DeviceState
    std::optional<int> m_holder;           ///< client that has the device open
    bool m_notOpenReported = false;
};

} // namespace Sim
