#pragma once

#include <base/carriedsetting.h>

#include <QCoreApplication>
#include <QString>

namespace KEO {

/// The texts of all that is carried into the records of a new design.
struct CarryText
{
    Q_DECLARE_TR_FUNCTIONS(KEO::SettingsCarry)
};

/// Takes the entries of one core, in the order in which they come.
class CarryAccount
{
public:
    explicit CarryAccount(const QString &place) : m_place(place) {}

    /// From now on everything is lost for that reason.
    void lose(const QString &reason) { m_loss = reason; }
    void add(CarryOutcome outcome, const QString &setting, const QString &before,
             const QString &after, const QString &reason = {})
    {
        if (m_loss.isEmpty())
            m_entries.append({outcome, m_place, setting, before, after, reason});
        else
            m_entries.append({CarryOutcome::Lost, m_place, setting, before, {}, m_loss});
    }
    [[nodiscard]] const CarriedSettings &entries() const { return m_entries; }

private:
    QString m_place;
    QString m_loss;
    CarriedSettings m_entries;
};

} // namespace KEO
