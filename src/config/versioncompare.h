#pragma once

#include <QFlags>
#include <QString>

#include <exception>

namespace KEO {

/// A version text has a part that is no decimal number.
class CompareException final : public std::exception
{
public:
    explicit CompareException(const QString &message) : m_message(message) {}
    /// For people, translated.
    [[nodiscard]] QString message() const { return m_message; }
    [[nodiscard]] const char *what() const noexcept override { return "malformed version text"; }

private:
    QString m_message;
};

/// How the first version stands to the second. Flags, so that a caller can test for several at
/// once.
enum VersionOrder { LowerVersion = 1, EqualVersion = 2, HigherVersion = 4 };
Q_DECLARE_FLAGS(VersionOrders, VersionOrder)
Q_DECLARE_OPERATORS_FOR_FLAGS(VersionOrders)

/// Compares dotted version texts number by number and sets exactly one flag. Empty parts are
/// skipped, missing ones count as 0. Throws CompareException at a part that is no number, unless an
/// earlier part has decided.
VersionOrders compareVersions(const QString &a, const QString &b);
/// \a version is no higher than \a newest. Throws as compareVersions does.
bool isAtMost(const QString &version, const QString &newest);

} // namespace KEO
