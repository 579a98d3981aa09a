#include "liteconfig.h"

#include "descriptionelement.h"
#include "descriptionfile.h"
#include "signallist.h"
#include "versioncompare.h"

#include <base/boundedxml.h>

#include <QCoreApplication>
#include <QDomDocument>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

using LiteDescription = Description<QList<LiteCoreConfig>>;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::LiteConfig)
};

LiteCoreConfig readCore(const QDomElement &element)
{
    LiteCoreConfig core(numberAttribute(element, u"index"_s));
    core.sample_clock = element.attribute(u"sample_clock"_s);
    core.trig_type = numberAttribute(element, u"trig_type"_s);
    core.capture_amount = numberAttribute(element, u"capture_amount"_s);
    core.implemention = numberAttribute(element, u"implemention"_s);
    core.input_register_enabled = flagAttribute(element, u"input_register_enabled"_s);
    core.capture_init_data_enabled = flagAttribute(element, u"capture_init_data_enabled"_s);
    core.module_name = element.attribute(u"module_name"_s, core.module_name);
    // A lite row has no filling: its width is the number of signals. A member left out for its
    // element's name would put every bit behind it, and every row behind the first, out of place.
    core.signals =
        readSignalList(element.firstChildElement(u"SignalList"_s), BusMembers::AnyElement);
    return core;
}

Result<LiteDescription> readDescription(const QDomElement &root)
{
    LiteDescription description;
    CoreCount count;
    for (QDomElement element = root.firstChildElement(u"KoCore_Lite"_s); !element.isNull();
         element = element.nextSiblingElement(u"KoCore_Lite"_s)) {
        description.cores.append(readCore(element));
        if (const std::optional<Error> error = count.add(description.cores.last().signals))
            return *error;
    }
    description.id = root.firstChildElement(u"KEO_ID"_s).text();
    return description;
}

Result<LiteDescription> parseDescription(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return LiteDescription{};
    const Result<QDomDocument> document = parseBoundedXml(bytes, kDescriptionLimits);
    if (!document)
        return document.error();
    const QDomElement root = document->documentElement();
    const QDomElement version = root.firstChildElement(u"Version"_s);
    if (version.isNull())
        return Error{Error::Format, Text::tr("Unknown Keo version.")};
    try {
        if (!isAtMost(version.text(), u"3.0"_s))
            return Error{Error::Format, Text::tr("The version of Keo config file is too high.")};
    } catch (const CompareException &exception) {
        return Error{Error::Format, exception.message()};
    }
    return readDescription(root);
}

} // namespace

QList<LiteCoreConfig> loadLiteConfigFile(const QString &path, QString *idOut, bool *okOut,
                                         QString *errorOut)
{
    const Result<QByteArray> bytes = readDescriptionFile(path, Text::tr("Open file failed"));
    if (bytes)
        return loadLiteConfig(*bytes, idOut, okOut, errorOut);
    return deliver<QList<LiteCoreConfig>>(bytes.error(), idOut, okOut, errorOut);
}

QList<LiteCoreConfig> loadLiteConfig(const QByteArray &bytes, QString *idOut, bool *okOut,
                                     QString *errorOut)
{
    return deliver(parseDescription(bytes), idOut, okOut, errorOut);
}

} // namespace KEO
