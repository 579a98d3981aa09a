#pragma once

#include <QBitArray>
#include <QJsonArray>
#include <QList>
#include <QString>

#include <optional>

namespace KEO {

/// A shift word taken apart, by its bits alone.
struct ShiftWordFields
{
    enum class Kind {
        CoreSelect,     ///< all words up to the next one are for that core
        RegisterWrite,  ///< `data` is written
        RegisterSelect, ///< what is shifted out next is that register
        Block,          ///< rows of capture memory: their number in `data`, or room for one of them
        Unknown         ///< no word that a core knows; `data` is all of it
    };

    Kind kind = Kind::Unknown;
    int core = 0;        ///< of a CoreSelect
    quint16 address = 0; ///< of all others but Unknown
    QBitArray data;      ///< what follows the address, most significant bit first

    bool operator==(const ShiftWordFields &) const = default;
};
[[nodiscard]] ShiftWordFields fieldsOf(const QBitArray &word);

/// What one shift word says, or many in a row that fill the same truth table.
struct RegisterPreviewLine
{
    ShiftWordFields::Kind kind = ShiftWordFields::Kind::Unknown;
    qsizetype words = 1;
    std::optional<quint16> address; ///< of the first word
    /// What is written or selected: "window count", "M3 compare", "truth table 0". Tables are
    /// counted as the core does, over the expressions in force.
    QString target;
    /// In the user's terms: "4", "== 01X", "1 at 3, 5-7". Bits that stand before the first one of
    /// meaning, X of a pattern and 0 of a number, are left out, since registers are wider than
    /// ports. Of any size.
    QString value;
    QString data; ///< hexadecimal; empty for a table
};

/// The meaning of a sequence of words, by their bits alone and in their order.
[[nodiscard]] QList<RegisterPreviewLine> previewOf(const QList<QBitArray> &words);

/// For people: a line each, values cut to a length that can be read.
[[nodiscard]] QString previewText(const QList<RegisterPreviewLine> &lines);
/// For programs: an object each with `word` (select, write, read, rows, unknown), `count`,
/// `address`, `register`, `value` and `data`, without those that are empty.
[[nodiscard]] QJsonArray previewJson(const QList<RegisterPreviewLine> &lines);

} // namespace KEO
