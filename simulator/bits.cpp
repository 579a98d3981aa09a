#include "bits.h"

#include <QtEndian>

#include <algorithm>

namespace Sim {

namespace {

constexpr int kWordBits = 64;

int wordsFor(qsizetype bits)
{
    return int((bits + kWordBits - 1) / kWordBits);
}

} // namespace

quint64 numberAt(const QBitArray &bits, qsizetype from, qsizetype count)
{
    quint64 number = 0;
    for (qsizetype i = from; i < from + count; ++i)
        number = (number << 1) | quint64(i < bits.size() && bits.testBit(i));
    return number;
}

QBitArray rightAligned(quint64 value, int width)
{
    QBitArray field(width);
    for (int i = width - 1; i >= 0 && value != 0; --i, value >>= 1)
        field.setBit(i, value & 1);
    return field;
}

std::vector<quint64> packLast(const QBitArray &field, int width)
{
    std::vector<quint64> words(size_t(wordsFor(width)), 0);
    const qsizetype skip = field.size() - width;
    for (int i = 0; i < width; ++i) {
        if (skip + i >= 0 && field.testBit(skip + i))
            words[size_t(i / kWordBits)] |= quint64(1) << (i % kWordBits);
    }
    return words;
}

BitMatrix::BitMatrix(int width) : m_width(width), m_words(wordsFor(width))
{
}

bool BitMatrix::bit(qint64 row, int column) const
{
    return (this->row(row)[column / kWordBits] >> (column % kWordBits)) & 1;
}

void BitMatrix::appendRow()
{
    m_data.resize(m_data.size() + size_t(m_words), 0);
    ++m_rows;
}

void BitMatrix::setInLastRow(int column)
{
    Q_ASSERT(m_rows > 0 && column >= 0 && column < m_width);
    m_data[size_t((m_rows - 1) * m_words + column / kWordBits)] |= quint64(1)
                                                                   << (column % kWordBits);
}

BitWriter::BitWriter(qsizetype expectedBits)
{
    m_words.reserve(size_t(wordsFor(expectedBits)) + 1);
}

void BitWriter::append(quint64 bits, int count)
{
    if (count <= 0)
        return;
    if (count < kWordBits)
        bits &= (quint64(1) << count) - 1;
    const int offset = int(m_size % kWordBits);
    if (offset == 0) {
        m_words.push_back(bits);
    } else {
        m_words.back() |= bits << offset;
        if (offset + count > kWordBits)
            m_words.push_back(bits >> (kWordBits - offset));
    }
    m_size += count;
}

void BitWriter::appendZeros(qsizetype count)
{
    for (; count > 0; count -= kWordBits)
        append(0, int(std::min<qsizetype>(count, kWordBits)));
}

void BitWriter::appendPacked(const quint64 *words, int count)
{
    for (; count > 0; count -= kWordBits, ++words)
        append(*words, std::min(count, kWordBits));
}

QBitArray BitWriter::take()
{
    for (quint64 &word : m_words)
        word = qToLittleEndian(word);
    QBitArray bits = QBitArray::fromBits(reinterpret_cast<const char *>(m_words.data()), m_size);
    m_words.clear();
    m_size = 0;
    return bits;
}

} // namespace Sim
