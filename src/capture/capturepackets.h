#pragma once

#include <link/cmdpack.h>

#include <QBitArray>
#include <QVariant>

namespace KEO {

// The packets of a capture run, whatever kind of core it runs on.

/// Which part of which capture window a memory read is for. The server gives `sectionCount` and
/// `window` back in its reply.
struct SectionPlace
{
    int section = 0;
    int sectionCount = 0;
    int window = 0;
};

/// Opens the device. \a chain has an int for each device on the JTAG chain: 0 for the one with the
/// analyzer, the instruction code of any other. The reply holds "RES", 0 for success.
CmdPack openPacket(const QVariantList &chain);
/// Closes the device; no reply.
CmdPack closePacket();
/// A core select word or a register write; no reply.
CmdPack writeRegisterPacket(const QBitArray &word);
/// A write of the start register, or its read select; no reply.
CmdPack writeStartPacket(const QBitArray &word);
/// Reads \a size bits of the start register that was selected. The reply holds "DATA".
CmdPack readStartPacket(int size);
/// Selects the capture init register of a lite core for reading; no reply.
CmdPack selectCaptureInitPacket(const QBitArray &word);
/// Reads the \a size bits of that register. The reply holds "DATA".
CmdPack readCaptureInitPacket(int size);
/// Asks for a block of capture memory; no reply.
CmdPack burstReadPacket(const QBitArray &word, const SectionPlace &place);
/// Reads the \a size bits of that block. The reply holds "DATA", "SECTION_COUNT" and "WINDOW".
CmdPack readRamPacket(int size, const SectionPlace &place);

} // namespace KEO
