#pragma once

#include <QString>
#include <QStringList>

namespace KEO {

/// \a value for a sentence: a port may have thousands of bits.
[[nodiscard]] QString shortened(const QString &value);

/// What has become of the value in a field that its digits don't tell, for whoever is about to
/// store it.
class ValueStory final
{
public:
    /// The field shows what a unit holds, \a stored.
    void begin(const QString &stored);
    /// The field changed for another reason than the user's typing; \a told says what got lost in
    /// it, or nothing.
    void replaced(const QString &told = {});
    /// Tells \a told of the value as it stands.
    void tell(const QString &told) { m_told = told; }
    /// The user typed or deleted: the field has \a text now, the cursor is at \a cursor.
    void typed(const QString &text, int cursor);
    /// To be called when the field has changed in any way, after the above.
    void settle(const QString &text) { m_before = text; }

    /// Sentences on \a text, digits of radix \a base in a field of \a bits bits, which would be
    /// stored as \a stored.
    [[nodiscard]] QStringList faults(const QString &text, const QString &stored, int base,
                                     int bits) const;
    [[nodiscard]] QString told() const { return m_told; }

private:
    QString m_stored;       // the unit's, as long as the field shows it
    QString m_told;         // a sentence
    QString m_before;       // the field before the next edit
    int m_typedDigits = -1; // typed into an empty field, from its beginning; -1: it had a value
};

} // namespace KEO
