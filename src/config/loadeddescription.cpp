#include "loadeddescription.h"

#include "descriptionfile.h"
#include "liteconfig.h"
#include "standardconfig.h"

#include <base/wholefile.h>

#include <QCoreApplication>

#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::LoadedDescription)
};

} // namespace

Result<QByteArray> descriptionBytes(const QString &path)
{
    return readWholeFile(path, kMaxDescriptionSize, LineEnds::Native);
}

Result<LoadedDescription> loadDescription(const QByteArray &bytes)
{
    const Result<DescriptionHead> head = readDescriptionHead(bytes);
    if (!head)
        return head.error();
    LoadedDescription description;
    description.kind = head->kind;
    description.version = head->version;
    bool ok = false;
    QString error;
    if (head->kind == DescriptionKind::Lite) {
        description.lite = loadLiteConfig(bytes, &description.id, &ok, &error);
    } else {
        const Result<StandardText> text = standardConfigText(bytes);
        if (!text)
            return text.error();
        description.standard = loadStandardConfig(text->text, &description.id, &ok, &error);
    }
    if (!ok)
        return Error{Error::Format, error};
    if (description.standard.empty() && description.lite.isEmpty())
        return Error{Error::Format, Text::tr("The description has no core.")};
    return description;
}

} // namespace KEO
