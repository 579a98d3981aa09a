#include "devicemodels.h"

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

} // namespace KEO
