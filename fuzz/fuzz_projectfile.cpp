// Bytes as a project file: nothing but plain text comes out of it.

#include <design/projectfile.h>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto project =
        KEO::parseProjectFile(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    Q_UNUSED(project);
    return 0;
}
