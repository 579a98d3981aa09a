#include "truthtable.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <optional>
#include <span>
#include <vector>

// Truth tables work on the characters of a stored text, apart from the dialog's check on tokens:
// the two conversions differ for texts that the dialog would refuse, and both forms are kept.

namespace KEO {

namespace {

constexpr int kMaxVariables = TruthTable::kMaxInputs; // as many as a core has match units
constexpr int kWordInputs = 6;                        // whose states one word holds

/// Words of 64 table entries that all values on the stack may take together. It bounds the memory
/// for a text that piles up values by the hundred thousand.
constexpr qsizetype kStackWords = 4 * 1024 * 1024;

bool isVariable(QChar c)
{
    return c >= u'A' && c <= u'Z';
}

int rankOf(QChar c)
{
    switch (c.unicode()) {
    case u'!':
        return 4;
    case u'&':
        return 3;
    case u'^':
        return 2;
    case u'|':
        return 1;
    default:
        return 0;
    }
}

/// One letter for each unit, from the highest number down, so that M1 is not found inside M10.
QString unitsToLetters(QString text)
{
    QChar letter = u'A';
    for (int unit = kMaxVariables - 1; unit >= 0; --unit) {
        const QString name = QLatin1Char('M') + QString::number(unit);
        if (!text.contains(name))
            continue;
        text.replace(name, QString(letter));
        letter = QChar(letter.unicode() + 1);
    }
    return text;
}

/// The text in postfix order, or nothing when a ")" finds no "(" on a stack that is in use.
std::optional<QString> toPostfix(const QString &text)
{
    QString output;
    output.reserve(text.size());
    QString stack;
    const auto popToOutput = [&] {
        output.append(stack.back());
        stack.chop(1);
    };
    for (const QChar c : text) {
        if (isVariable(c)) {
            output.append(c);
        } else if (stack.isEmpty() || c == u'(') {
            stack.append(c);
        } else if (c == u')') {
            while (!stack.isEmpty() && stack.back() != u'(')
                popToOutput();
            if (stack.isEmpty())
                return std::nullopt;
            stack.chop(1);
        } else {
            while (!stack.isEmpty() && rankOf(stack.back()) >= rankOf(c))
                popToOutput();
            stack.append(c);
        }
    }
    while (!stack.isEmpty())
        popToOutput();
    return output;
}

/// The greatest number of values that the evaluation stacks up, or nothing when an operator lacks
/// an operand or the evaluation does not end with one value. It needs no values to tell.
std::optional<qsizetype> stackDepth(QStringView postfix)
{
    qsizetype values = 0;
    qsizetype deepest = 0;
    for (const QChar c : postfix) {
        if (isVariable(c) || c == u'0' || c == u'1') {
            deepest = std::max(deepest, ++values);
        } else if (c == u'!') {
            if (values < 1)
                return std::nullopt;
        } else if (c == u'&' || c == u'|' || c == u'^') {
            if (values < 2)
                return std::nullopt;
            --values;
        }
    }
    if (values != 1)
        return std::nullopt;
    return deepest;
}

/// A stack of values, each of which is a run of words of the table.
class ValueStack final
{
public:
    ValueStack(qsizetype depth, qsizetype wordsPerValue)
        : m_words(size_t(depth * wordsPerValue)), m_wordsPerValue(size_t(wordsPerValue))
    {
    }

    std::span<quint64> push() { return value(m_size++); }
    std::span<quint64> top() { return value(m_size - 1); }
    /// Replaces the two topmost values by one.
    template <typename Operation>
    void combine(Operation operation)
    {
        const std::span<quint64> right = top();
        --m_size;
        const std::span<quint64> left = top();
        std::transform(left.begin(), left.end(), right.begin(), left.begin(), operation);
    }
    void clear() { m_size = 0; }

private:
    std::span<quint64> value(size_t index)
    {
        return {m_words.data() + index * m_wordsPerValue, m_wordsPerValue};
    }

    std::vector<quint64> m_words;
    size_t m_wordsPerValue;
    size_t m_size = 0;
};

/// Leaves the words of the table from \a firstWord on as the one value of \a stack.
void evaluate(QStringView postfix, int variables, qsizetype firstWord, ValueStack &stack)
{
    stack.clear();
    for (const QChar c : postfix) {
        if (isVariable(c)) {
            const int bit = variables - 1 - (c.unicode() - u'A');
            qsizetype word = firstWord;
            for (quint64 &entries : stack.push())
                entries = TruthTable::inputWord(bit, size_t(word++));
        } else if (c == u'0' || c == u'1') {
            std::ranges::fill(stack.push(), c == u'1' ? ~quint64(0) : 0);
        } else if (c == u'!') {
            for (quint64 &entries : stack.top())
                entries = ~entries;
        } else if (c == u'&') {
            stack.combine(std::bit_and<>());
        } else if (c == u'|') {
            stack.combine(std::bit_or<>());
        } else if (c == u'^') {
            stack.combine(std::bit_xor<>());
        }
    }
}

TruthTable tableOf(QStringView postfix, int variables, qsizetype depth)
{
    TruthTable table = TruthTable::constant(variables, false);
    const qsizetype words = qsizetype(table.words.size());
    const qsizetype block =
        std::bit_floor(size_t(std::clamp<qsizetype>(kStackWords / depth, 1, words)));
    ValueStack stack(depth, block);
    for (qsizetype first = 0; first < words; first += block) {
        evaluate(postfix, variables, first, stack);
        std::ranges::copy(stack.top(), table.words.begin() + first);
    }
    return table;
}

/// Which of the letters a text holds; bit k: the letter 'A' + k.
quint32 lettersIn(const QString &letters)
{
    quint32 named = 0;
    for (const QChar c : letters) {
        if (isVariable(c))
            named |= quint32(1) << (c.unicode() - u'A');
    }
    return named;
}

std::optional<TruthTable> evaluateLetters(const QString &letters, quint32 named)
{
    const int variables = std::popcount(named);
    if (variables > kMaxVariables || named != (quint32(1) << variables) - 1)
        return std::nullopt;
    const std::optional<QString> postfix = toPostfix(letters);
    if (!postfix)
        return std::nullopt;
    const std::optional<qsizetype> depth = stackDepth(*postfix);
    if (!depth)
        return std::nullopt;
    return tableOf(*postfix, variables, *depth);
}

/// The first half of the entries of \a word, in runs of 2^\a bit, each run twice.
quint64 doubledRuns(quint64 word, int bit)
{
    word &= 0xffffffff;
    for (int level = 4; level >= bit; --level)
        word = (word | word << (1 << level)) & ~TruthTable::inputWord(level, 0);
    return word | word << (1 << bit);
}

/// The table with one more input, number \a place, that makes no difference.
TruthTable withIdleInput(const TruthTable &table, int place)
{
    TruthTable wider = TruthTable::constant(table.inputs + 1, false);
    const size_t words = wider.words.size();
    if (place >= kWordInputs) {
        const size_t run = size_t(1) << (place - kWordInputs);
        for (size_t i = 0; i < words; ++i)
            wider.words[i] = table.words[i / (2 * run) * run + i % run];
        return wider;
    }
    for (size_t i = 0; i < words; ++i) {
        const quint64 half = table.words[i / 2] >> (i % 2 * 32);
        wider.words[i] = doubledRuns(half, place);
    }
    return wider;
}

/// The first 2^\a inputs entries; those that the table lacks are off.
TruthTable cutTo(const TruthTable &table, int inputs)
{
    TruthTable cut = TruthTable::constant(inputs, false);
    const quint32 entries = std::min(table.size(), cut.size());
    for (quint32 i = 0; i < entries; ++i) {
        if (table.at(i))
            cut.words[i / 64] |= quint64(1) << (i % 64);
    }
    for (int known = inputs; known < kWordInputs; ++known)
        cut.words[0] |= cut.words[0] << (1 << known);
    return cut;
}

} // namespace

TruthTable TruthTable::constant(int inputs, bool answer)
{
    TruthTable table;
    table.inputs = inputs;
    table.words.assign((size_t(table.size()) + 63) / 64, answer ? ~quint64(0) : 0);
    return table;
}

quint64 TruthTable::inputWord(int input, size_t word)
{
    static constexpr std::array<quint64, kWordInputs> kInsideWord = {
        0xAAAAAAAAAAAAAAAA, 0xCCCCCCCCCCCCCCCC, 0xF0F0F0F0F0F0F0F0,
        0xFF00FF00FF00FF00, 0xFFFF0000FFFF0000, 0xFFFFFFFF00000000};
    if (input < kWordInputs)
        return kInsideWord[size_t(input)];
    return (word >> (input - kWordInputs)) & 1 ? ~quint64(0) : 0;
}

TruthTable TruthTable::withFixed(int input, bool state) const
{
    TruthTable table = constant(inputs - 1, false);
    const quint32 below = (quint32(1) << input) - 1;
    for (size_t word = 0; word < table.words.size(); ++word) {
        for (quint32 bit = 0; bit < 64; ++bit) {
            const quint32 entry = (quint32(word) * 64 + bit) & (table.size() - 1);
            const quint32 old = (entry & below) | (entry & ~below) << 1 | quint32(state) << input;
            table.words[word] |= quint64(at(old)) << bit;
        }
    }
    return table;
}

TruthTable TruthTable::spreadOver(quint32 places, int newInputs) const
{
    const int placed = std::popcount(places);
    TruthTable table = placed == inputs ? *this : cutTo(*this, placed);
    for (int input = 0; input < newInputs; ++input) {
        if (!((places >> input) & 1))
            table = withIdleInput(table, input);
    }
    return table;
}

std::optional<TruthTable> evaluateExpression(const QString &text)
{
    const QString letters = unitsToLetters(text);
    return evaluateLetters(letters, lettersIn(letters));
}

QString expressionTruthTable(const QString &text)
{
    const QString letters = unitsToLetters(text);
    const quint32 named = lettersIn(letters);
    const std::optional<TruthTable> table = evaluateLetters(letters, named);
    if (!table) {
        const int variables = std::min(std::popcount(named), kMaxVariables);
        return QString(qsizetype(1) << variables, u'x');
    }
    QString characters(qsizetype(table->size()), Qt::Uninitialized);
    QChar *out = characters.data();
    for (quint32 i = 0; i < table->size(); ++i)
        out[i] = table->at(i) ? u'1' : u'0';
    return characters;
}

} // namespace KEO
