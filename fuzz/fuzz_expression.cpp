#include <trigger/naivetable.h>

#include <trigger/expression.h>
#include <trigger/truthtable.h>

#include <QString>

#include <cstdint>
#include <cstdlib>

/// Any bytes as an expression text: the table has a legal length and only legal characters, and for
/// short texts it is the table that the slow evaluation gives.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString table = KEO::expressionTruthTable(text);
    if (table.isEmpty() || table.size() > 65536 || (table.size() & (table.size() - 1)) != 0)
        std::abort();
    const bool evaluated = table[0] != u'x';
    for (const QChar c : table) {
        if (evaluated ? c != u'0' && c != u'1' : c != u'x')
            std::abort();
    }
    if (text.size() <= 40 && table.size() <= 1024 && NaiveTable::of(text) != table)
        std::abort();
    return 0;
}
