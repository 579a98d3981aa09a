// Bytes as a core description of either kind: whatever loads must come back the same from what is
// saved.

#include <config/coretext.h>
#include <config/liteconfig.h>
#include <config/standardconfig.h>

#include <QLoggingCategory>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    QLoggingCategory::setFilterRules(QStringLiteral("signalscope.*=false"));
    return 0;
}

namespace {

void readStandard(const QByteArray &bytes)
{
    const KEO::Result<KEO::StandardText> text = KEO::standardConfigText(bytes);
    if (!text)
        return;
    bool ok = false;
    const KEO::CoreList cores = KEO::loadStandardConfig(text->text, nullptr, &ok, nullptr);
    if (!ok && !cores.empty())
        std::abort();
    const QByteArray saved = KEO::standardConfigBytes(cores, text->encoding);
    const KEO::CoreList again =
        KEO::loadStandardConfig(KEO::standardConfigText(saved)->text, nullptr, &ok, nullptr);
    if (!ok || coreText(again) != coreText(cores)) {
        qDebug().noquote() << saved;
        std::abort();
    }
    for (const auto &core : cores) {
        if (core->requiredRegisterWidth() < KEO::CoreConfig::kMinRegisterWidth)
            std::abort();
    }
}

void readLite(const QByteArray &bytes)
{
    bool ok = false;
    const auto cores = KEO::loadLiteConfig(bytes, nullptr, &ok);
    if (!ok && !cores.isEmpty())
        std::abort();
    const QByteArray saved = KEO::saveLiteConfig(cores);
    if (KEO::loadLiteConfig(saved, nullptr, &ok) != cores || !ok) {
        qDebug().noquote() << saved;
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    readStandard(bytes);
    readLite(bytes);
    return 0;
}
