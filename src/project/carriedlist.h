#pragma once

#include "grouplist.h"

#include <base/carriedsetting.h>

namespace KEO {

/// How many settings of \a account were kept, adapted and lost, in words.
[[nodiscard]] QString countsOf(const CarriedSettings &account);

/// What became of a user's settings, with the reasons; what was lost comes first.
class CarriedList final : public GroupList
{
    Q_OBJECT

public:
    CarriedList(const CarriedSettings &account, QWidget *parent);
};

} // namespace KEO
