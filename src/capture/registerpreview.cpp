#include "registerpreview.h"

#include "bits.h"
#include "registermap.h"

#include <config/matchtype.h>

#include <QCoreApplication>
#include <QHash>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

namespace KEO {

namespace {

using Kind = ShiftWordFields::Kind;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::RegisterPreview)
};

constexpr qsizetype kOpcodeBits = 5;
constexpr qsizetype kAddressBits = 16;
constexpr qsizetype kCountBits = 16; // of rows in a block word
constexpr qsizetype kMaxShown = 120; // characters of a value

/// The last bits of \a bits, 64 at most, as a number.
quint64 numberOf(const QBitArray &bits)
{
    quint64 number = 0;
    for (qsizetype i = std::max<qsizetype>(0, bits.size() - 64); i < bits.size(); ++i)
        number = number << 1 | quint64(bits.testBit(i));
    return number;
}

QString digitsOf(const QBitArray &bits)
{
    QString digits;
    for (qsizetype i = 0; i < bits.size(); ++i)
        digits += bits.testBit(i) ? u'1' : u'0';
    return digits;
}

/// Without the characters \a filling in front, but for a last one.
QString trimmed(const QString &text, QChar filling)
{
    qsizetype start = 0;
    while (start + 1 < text.size() && text[start] == filling)
        ++start;
    return text.mid(start);
}

QString hexadecimalOf(const QBitArray &bits)
{
    const QBitArray whole = alignBits(bits, (bits.size() + 3) / 4 * 4);
    QString text;
    for (qsizetype i = 0; i < whole.size(); i += 4)
        text += QString::number(numberOf(sliceBits(whole, i, 4)), 16);
    return text;
}

/// "3, 5-7": the numbers of the set bits.
QString rangesOf(const QBitArray &set)
{
    QStringList ranges;
    for (qsizetype i = 0; i < set.size(); ++i) {
        if (!set.testBit(i))
            continue;
        qsizetype last = i;
        while (last + 1 < set.size() && set.testBit(last + 1))
            ++last;
        ranges.append(last == i ? QString::number(i) : QStringLiteral("%1-%2").arg(i).arg(last));
        i = last;
    }
    return ranges.join(QStringLiteral(", "));
}

/// What a register of a match unit holds, as far as it has been written.
struct UnitRegisters
{
    QBitArray compare;
    QBitArray mask;
    QBitArray edge;

    /// The letters that an equality compares with.
    [[nodiscard]] QString pattern() const
    {
        static const QString letters = QStringLiteral("XX01RFBN"); // edge, mask, compare
        QString text;
        for (qsizetype i = 0; i < compare.size(); ++i) {
            const bool isMasked = i < mask.size() && mask.testBit(i);
            const bool isEdge = i < edge.size() && edge.testBit(i);
            text += letters[isEdge * 4 + isMasked * 2 + compare.testBit(i)];
        }
        return trimmed(text, u'X');
    }
};

/// Goes through the words and makes their lines.
class Previewer final
{
public:
    void add(const QBitArray &word);
    [[nodiscard]] QList<RegisterPreviewLine> lines();

private:
    /// The truth table that words are filling.
    struct OpenTable
    {
        qint64 number = 0;
        QBitArray set;
    };

    void addRegister(RegisterPreviewLine line, const QBitArray &data);
    void nameUnit(RegisterPreviewLine &line, const QBitArray &data);
    [[nodiscard]] QString controlText(const UnitRegisters &unit, quint64 control) const;
    bool fillTable(const ShiftWordFields &fields);
    void closeTable();

    QList<RegisterPreviewLine> m_lines;
    QHash<int, UnitRegisters> m_units; // of the core selected
    std::optional<OpenTable> m_table;  // of the last line
};

void Previewer::add(const QBitArray &word)
{
    const ShiftWordFields fields = fieldsOf(word);
    if (fillTable(fields))
        return;
    closeTable();
    RegisterPreviewLine line;
    line.kind = fields.kind;
    line.data = hexadecimalOf(fields.data);
    switch (fields.kind) {
    case Kind::CoreSelect:
        m_units.clear();
        line.target = Text::tr("core %1").arg(fields.core);
        break;
    case Kind::RegisterWrite:
    case Kind::RegisterSelect:
        line.address = fields.address;
        addRegister(line, fields.data);
        return;
    case Kind::Block:
        line.address = fields.address;
        line.target = Text::tr("capture memory");
        line.value = fields.data.size() == kCountBits
                         ? Text::tr("%1 rows").arg(numberOf(fields.data))
                         : Text::tr("%1 bits").arg(fields.data.size());
        break;
    case Kind::Unknown:
        line.target = Text::tr("no word that a core knows");
        break;
    }
    m_lines.append(line);
}

QList<RegisterPreviewLine> Previewer::lines()
{
    closeTable();
    return m_lines;
}

void Previewer::addRegister(RegisterPreviewLine line, const QBitArray &data)
{
    const bool isWrite = line.kind == Kind::RegisterWrite;
    // Numbers are 32 bits wide where they come from, in a register that may be wider or not.
    const quint64 modulus = quint64(1) << std::min<qsizetype>(data.size(), 32);
    const quint64 number = numberOf(data) % modulus;
    quint64 shown = number;
    switch (*line.address) {
    case Registers::kStart:
        line.target = Text::tr("start");
        if (isWrite)
            line.value = number == 0   ? Text::tr("disarm")
                         : number == 1 ? Text::tr("arm")
                         : number == 3 ? Text::tr("force")
                                       : QString::number(number);
        m_lines.append(line);
        return;
    case Registers::kCaptureInit:
        line.target = Text::tr("capture init");
        break;
    case Registers::kExpressionCount:
        line.target = Text::tr("expression count");
        shown = (number + 1) % modulus;
        break;
    case Registers::kCaptureAmount:
        line.target = Text::tr("capture amount");
        ++shown;
        break;
    case Registers::kTriggerOffset:
        line.target = Text::tr("trigger offset");
        break;
    case Registers::kWindowCount:
        line.target = Text::tr("window count");
        ++shown;
        break;
    default:
        nameUnit(line, data);
        m_lines.append(line);
        return;
    }
    if (isWrite)
        line.value = QString::number(shown);
    m_lines.append(line);
}

void Previewer::nameUnit(RegisterPreviewLine &line, const QBitArray &data)
{
    constexpr qint64 kUnits = 16;
    const qint64 offset = *line.address - Registers::kUnitBase;
    const bool isUnit = offset >= 0 && offset < kUnits * Registers::kBlock &&
                        offset % Registers::kBlock <= Registers::Counter;
    if (!isUnit) {
        line.target = Text::tr("unknown register");
        line.value = trimmed(digitsOf(data), u'0');
        return;
    }
    static const char *const names[] = {
        QT_TRANSLATE_NOOP("KEO::RegisterPreview", "M%1 compare"),
        QT_TRANSLATE_NOOP("KEO::RegisterPreview", "M%1 mask"),
        QT_TRANSLATE_NOOP("KEO::RegisterPreview", "M%1 edge"),
        QT_TRANSLATE_NOOP("KEO::RegisterPreview", "M%1 control"),
        QT_TRANSLATE_NOOP("KEO::RegisterPreview", "M%1 counter"),
    };
    const int number = int(offset / Registers::kBlock);
    const auto which = Registers::UnitRegister(offset % Registers::kBlock);
    line.target = Text::tr(names[which]).arg(number);
    if (line.kind != Kind::RegisterWrite)
        return;
    UnitRegisters &unit = m_units[number];
    switch (which) {
    case Registers::Compare:
        unit.compare = data;
        break;
    case Registers::Mask:
        unit.mask = data;
        break;
    case Registers::Edge:
        unit.edge = data;
        break;
    case Registers::Control:
        line.value = controlText(unit, numberOf(data));
        return;
    case Registers::Counter:
        line.value = Text::tr("%1 matches").arg((numberOf(data) & 0xffff) + 1);
        return;
    }
    line.value = trimmed(digitsOf(data), u'0');
}

QString Previewer::controlText(const UnitRegisters &unit, quint64 control) const
{
    const auto function = MatchFunction(control & 7);
    const QString lower = trimmed(digitsOf(unit.compare), u'0');
    const QString upper = trimmed(digitsOf(unit.mask), u'0');
    QString operand = lower;
    if (isEqualityFunction(function))
        operand = unit.pattern();
    else if (isRangeFunction(function))
        operand = Text::tr("%1 to %2").arg(lower, upper);
    else if (function == MatchFunction::Less || function == MatchFunction::LessOrEqual)
        operand = upper;
    const QString text = QStringLiteral("%1 %2").arg(matchFunctionText(function), operand);
    return control & 8 ? Text::tr("%1, matches in a row").arg(text) : text;
}

bool Previewer::fillTable(const ShiftWordFields &fields)
{
    const qint64 offset = qint64(fields.address) - Registers::kTableBase;
    if (fields.kind != Kind::RegisterWrite || offset < 0 ||
        offset % Registers::kBlock > Registers::SetEntry)
        return false;
    const qint64 number = offset / Registers::kBlock;
    if (!m_table || m_table->number != number) {
        closeTable();
        m_table = OpenTable{number, {}};
        RegisterPreviewLine line;
        line.kind = fields.kind;
        line.words = 0;
        line.address = fields.address;
        line.target = Text::tr("truth table %1").arg(number);
        m_lines.append(line);
    }
    ++m_lines.last().words;
    const auto entry = qsizetype(numberOf(fields.data) & 0xffff);
    QBitArray &set = m_table->set;
    if (entry >= set.size())
        set.resize(entry + 1);
    set.setBit(entry, offset % Registers::kBlock == Registers::SetEntry);
    return true;
}

void Previewer::closeTable()
{
    if (!m_table)
        return;
    const QBitArray &set = m_table->set;
    const qsizetype ones = set.count(true);
    QString &value = m_lines.last().value;
    if (ones == 0)
        value = Text::tr("1 nowhere");
    else if (ones == set.size())
        value = Text::tr("1 everywhere");
    else
        value = Text::tr("1 at %1").arg(rangesOf(set));
    m_table.reset();
}

QString nameOf(Kind kind)
{
    switch (kind) {
    case Kind::CoreSelect:
        return QStringLiteral("select");
    case Kind::RegisterWrite:
        return QStringLiteral("write");
    case Kind::RegisterSelect:
        return QStringLiteral("read");
    case Kind::Block:
        return QStringLiteral("rows");
    case Kind::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

QString addressText(const RegisterPreviewLine &line)
{
    return line.address ? QStringLiteral("0x%1")
                              .arg(*line.address, 4, 16, QLatin1Char('0'))
                              .toUpper()
                              .replace(u'X', u'x')
                        : QString();
}

} // namespace

ShiftWordFields fieldsOf(const QBitArray &word)
{
    ShiftWordFields fields;
    fields.data = word;
    if (word.size() == kOpcodeBits && word.testBit(0)) {
        fields.kind = Kind::CoreSelect;
        fields.core = int(numberOf(dropFrontBits(word, 1)));
        fields.data.clear();
        return fields;
    }
    if (word.size() < kOpcodeBits + kAddressBits)
        return fields;
    static const QHash<QString, Kind> kinds = {{QStringLiteral("01001"), Kind::RegisterWrite},
                                               {QStringLiteral("01101"), Kind::RegisterSelect},
                                               {QStringLiteral("00111"), Kind::Block}};
    fields.kind = kinds.value(digitsOf(sliceBits(word, 0, kOpcodeBits)), Kind::Unknown);
    if (fields.kind == Kind::Unknown)
        return fields;
    fields.address = quint16(numberOf(sliceBits(word, kOpcodeBits, kAddressBits)));
    fields.data = dropFrontBits(word, kOpcodeBits + kAddressBits);
    return fields;
}

QList<RegisterPreviewLine> previewOf(const QList<QBitArray> &words)
{
    Previewer previewer;
    for (const QBitArray &word : words)
        previewer.add(word);
    return previewer.lines();
}

QString previewText(const QList<RegisterPreviewLine> &lines)
{
    QStringList texts;
    for (const RegisterPreviewLine &line : lines) {
        QString text = QStringLiteral("%1 %2  %3")
                           .arg(nameOf(line.kind), -6)
                           .arg(addressText(line), -6)
                           .arg(line.target);
        if (line.words > 1)
            text += Text::tr(", %1 words").arg(line.words);
        if (line.value.size() > kMaxShown)
            text += Text::tr(" = %1 ... (%2 characters)")
                        .arg(line.value.left(kMaxShown), QString::number(line.value.size()));
        else if (!line.value.isEmpty())
            text += QStringLiteral(" = %1").arg(line.value);
        texts.append(text);
    }
    return texts.join(u'\n');
}

QJsonArray previewJson(const QList<RegisterPreviewLine> &lines)
{
    QJsonArray array;
    for (const RegisterPreviewLine &line : lines) {
        QJsonObject object{{QStringLiteral("word"), nameOf(line.kind)},
                           {QStringLiteral("count"), line.words},
                           {QStringLiteral("register"), line.target}};
        if (line.address)
            object.insert(QStringLiteral("address"), addressText(line));
        if (!line.value.isEmpty())
            object.insert(QStringLiteral("value"), line.value);
        if (!line.data.isEmpty())
            object.insert(QStringLiteral("data"), line.data);
        array.append(object);
    }
    return array;
}

} // namespace KEO
