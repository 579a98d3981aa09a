// Bytes as a project file: what is read comes back from what is written over them, and what is
// written stays as it is when it is written again.

#include <design/projectfile.h>

#include <cstdint>
#include <cstdlib>

using namespace KEO;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const Result<ProjectFile> read = parseProjectFile(bytes);
    // Paths that a file can hold, whatever the bytes are.
    const auto asPath = [](const QString &text) { return QString::fromUtf8(text.toUtf8()); };
    const ProjectFile project{asPath(read ? read->keoFile : QString::fromUtf8(bytes)),
                              asPath(read ? read->dataFile : QString::fromLatin1(bytes))};
    const QByteArray saved = projectFileText(bytes, project);
    const Result<ProjectFile> again = parseProjectFile(saved);
    require(bool(again) && *again == project);
    require(projectFileText(saved, project) == saved);
    return 0;
}
