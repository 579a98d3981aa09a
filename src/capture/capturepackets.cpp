#include "capturepackets.h"

namespace KEO {

namespace {

CmdPack command(const char *name)
{
    return {{QStringLiteral("CMD"), QString::fromLatin1(name)}};
}

CmdPack operation(const char *name, const char *operationTag)
{
    CmdPack pack = command(name);
    pack[QStringLiteral("OPRATE")] = QString::fromLatin1(operationTag);
    return pack;
}

CmdPack write(const char *operationTag, const QBitArray &word)
{
    CmdPack pack = operation("WRITE", operationTag);
    pack[QStringLiteral("DATA")] = word;
    return pack;
}

CmdPack read(const char *operationTag, int size)
{
    CmdPack pack = operation("READ", operationTag);
    pack[QStringLiteral("SIZE")] = size;
    return pack;
}

CmdPack at(const SectionPlace &place, CmdPack pack)
{
    pack[QStringLiteral("SECTION")] = place.section;
    pack[QStringLiteral("SECTION_COUNT")] = place.sectionCount;
    pack[QStringLiteral("WINDOW")] = place.window;
    return pack;
}

} // namespace

CmdPack openPacket(const QVariantList &chain)
{
    CmdPack pack = command("OPEN");
    pack[QStringLiteral("CHAIN")] = chain;
    return pack;
}

CmdPack closePacket()
{
    return command("CLOSE");
}

CmdPack writeRegisterPacket(const QBitArray &word)
{
    return write("WRITE_REGISTOR", word);
}

CmdPack writeStartPacket(const QBitArray &word)
{
    return write("WRITE_START_REG", word);
}

CmdPack readStartPacket(int size)
{
    return read("READ_START_REG", size);
}

CmdPack selectCaptureInitPacket(const QBitArray &word)
{
    return write("OP_SELECT_CAPTURE_INIT", word);
}

CmdPack readCaptureInitPacket(int size)
{
    return read("OP_READ_CAPTURE_INIT", size);
}

CmdPack burstReadPacket(const QBitArray &word, const SectionPlace &place)
{
    return at(place, write("BRUST_READ", word));
}

CmdPack readRamPacket(int size, const SectionPlace &place)
{
    return at(place, read("READ_RAM", size));
}

} // namespace KEO
