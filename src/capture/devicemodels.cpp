#include "devicemodels.h"

#include <QCoreApplication>
#include <QLatin1String>

#include <algorithm>
#include <array>

namespace KEO {

namespace {

constexpr std::array kLateModels = {
    QLatin1String("KR-A"), QLatin1String("KR-B"), QLatin1String("KR-C"), QLatin1String("KR-D"),
    QLatin1String("KR-E"), QLatin1String("KR-F"), QLatin1String("KR-G"), QLatin1String("KR-H"),
    QLatin1String("KR-I"), QLatin1String("KR-J"), QLatin1String("KR-K"), QLatin1String("KR-L"),
    QLatin1String("KR-M"), QLatin1String("KR-N"), QLatin1String("KR-O"), QLatin1String("KR-P"),
    QLatin1String("KR-Q"), QLatin1String("KR-R")};

} // namespace

bool writesOneRowLate(const QString &deviceModel)
{
    return std::ranges::find(kLateModels, deviceModel) != kLateModels.end();
}

QString lateModelMeant(const QString &deviceModel)
{
    if (writesOneRowLate(deviceModel))
        return {};
    const QString name = deviceModel.trimmed();
    for (const QLatin1String model : kLateModels) {
        const bool isLonger = name.size() > model.size();
        if (name.startsWith(model, Qt::CaseInsensitive) &&
            !(isLonger && name.at(model.size()).isLetterOrNumber()))
            return model;
    }
    return {};
}

QStringList lateModels()
{
    return {kLateModels.begin(), kLateModels.end()};
}

QString lateModelsText()
{
    return QCoreApplication::translate("KEO::DeviceModels", "%1 to %2")
        .arg(kLateModels.front(), kLateModels.back());
}

} // namespace KEO
