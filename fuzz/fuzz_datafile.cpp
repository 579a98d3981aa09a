// Bytes as a data file: what is read must be what the toolkit's tree says, and must come to rest
// when it is written and read again.

#include <design/datafilecheck.h>
#include <design/datafilereader.h>
#include <design/datafilewriter.h>

#include <QDomDocument>

#include <cstdint>
#include <cstdlib>

using namespace KEO;
using WaveMonitor::WindowContents;

namespace {

constexpr size_t kMaximumTree = 16 * 1024; // the tree is quadratic in depth and attributes

void require(bool condition)
{
    if (!condition)
        std::abort();
}

QByteArray textOf(const WindowContents &contents)
{
    return dataFileText({{std::nullopt, 0, &contents}});
}

/// Texts of all windows, in any order: the tree lists a window before those inside it.
QByteArrayList sorted(QByteArrayList texts)
{
    std::sort(texts.begin(), texts.end());
    return texts;
}

void compareWithTree(const QByteArray &bytes, const QByteArrayList &texts)
{
    QDomDocument document;
    if (!document.setContent(bytes))
        return; // an encoding or version that one of the two takes
    const QDomNodeList elements =
        document.documentElement().elementsByTagName(QStringLiteral("Window"));
    QByteArrayList expected;
    for (int i = 0; i < elements.size(); ++i) {
        const QDomElement element = elements.at(i).toElement();
        WindowContents contents;
        contents.readWindow(element);
        expected.append(textOf(contents));
    }
    require(sorted(expected) == sorted(texts));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const Result<LoadedWindows> loaded = readDataFile(bytes);
    if (!loaded)
        return 0;
    QByteArrayList texts;
    QList<WindowToSave> windows;
    for (const LoadedWindow &window : *loaded) {
        texts.append(textOf(window.contents));
        require(!placeOf(window) || window.isTopLevel);
        windows.append({window.core.toInt(), window.index.toInt(), &window.contents});
    }
    if (size <= kMaximumTree)
        compareWithTree(bytes, texts);

    const QByteArray saved = dataFileText(windows);
    const Result<LoadedWindows> again = readDataFile(saved);
    require(bool(again) && again->size() == loaded->size());
    QList<WindowToSave> savedAgain;
    for (const LoadedWindow &window : *again)
        savedAgain.append({window.core.toInt(), window.index.toInt(), &window.contents});
    require(dataFileText(savedAgain) == saved);
    return 0;
}
