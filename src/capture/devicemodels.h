#pragma once

#include <QString>
#include <QStringList>

namespace KEO {

/// Whether cores in this device model, letter for letter, write their capture memory one row late
/// when the design is described by a .keo file: a standard core takes one row more after the
/// trigger, a lite core's last row comes round to the first address.
bool writesOneRowLate(const QString &deviceModel);

/// The model that \a deviceModel may have been meant for, since it differs from it in the case of
/// letters, blanks, or what follows the model in a part number: one that writes late although the
/// text does not name it. Else empty.
QString lateModelMeant(const QString &deviceModel);

/// The models that write late, in their order.
[[nodiscard]] QStringList lateModels();

/// All models that write late, for a user: "KR-A to KR-R".
QString lateModelsText();

} // namespace KEO
