#pragma once

#include <QString>

class QBitArray;

namespace WaveMonitor {

/// The radix in which the values of a row are shown.
class DataFormat final
{
public:
    enum Type : int {
        Binary = 0,
        Octal = 1,
        SignedDecimal = 2, ///< two's complement
        UnsignedDecimal = 3,
        Hexadecimal = 4,
        Ascii = 5 ///< known in files, but not offered to the user, and shows nothing
    };

    explicit DataFormat(Type type = Hexadecimal) : m_type(type) {}

    [[nodiscard]] Type type() const { return m_type; }
    void setType(Type type) { m_type = type; }

    /// Menu text, such as "Signed Decimal"; empty for a value outside the enumeration.
    [[nodiscard]] static QString typeName(Type type);
    /// Key in files, such as "signed decimal"; empty for a value outside the enumeration.
    [[nodiscard]] static QString typeKey(Type type);
    /// The type with exactly that key; Hexadecimal for any other text.
    [[nodiscard]] static Type typeFromKey(QStringView key);

    /// Text of a value whose bit 0 is the most significant one. No bits give "null", a single bit
    /// "0" or "1" whatever the type. Binary, octal and hexadecimal keep their leading zeros, so
    /// their width depends on the bit count alone; decimal is exact at any width.
    [[nodiscard]] QString toText(const QBitArray &value) const;

private:
    Type m_type;
};

} // namespace WaveMonitor
