#pragma once

#include <wave_data/dataformat.h>

#include <QBitArray>
#include <QList>
#include <QString>

namespace KEO {

/// One exported column. Samples stay packed and are shared with the window they come from; the text
/// of a cell is made when it is asked for. The writers take whole columns by `rows`, because a call
/// for each cell would cost more than everything else they do.
class SignalData
{
public:
    [[nodiscard]] virtual QString name() const = 0; ///< column title
    /// Text of one sample; empty when a bit of it is missing.
    [[nodiscard]] virtual QString value(int sample) const = 0;
    [[nodiscard]] virtual int size() const = 0; ///< samples
    [[nodiscard]] virtual bool isBus() const = 0;
    virtual ~SignalData() = default;

    /// The bits of the column, most significant first, one array of samples each.
    [[nodiscard]] virtual QList<QBitArray> rows() const = 0;
    [[nodiscard]] virtual WaveMonitor::DataFormat::Type format() const = 0;
};

/// A column of one bit.
class _Signal final : public SignalData
{
public:
    _Signal(QString name, QBitArray data);

    [[nodiscard]] QString name() const override { return m_name; }
    [[nodiscard]] QString value(int sample) const override;
    [[nodiscard]] int size() const override { return int(m_data.size()); }
    [[nodiscard]] bool isBus() const override { return false; }
    [[nodiscard]] QList<QBitArray> rows() const override { return {m_data}; }
    [[nodiscard]] WaveMonitor::DataFormat::Type format() const override;

private:
    QString m_name;
    QBitArray m_data; ///< bit i is sample i
};

/// A column that shows its members as one number. The length is that of the first member; where
/// another one is shorter, the cell is empty.
class _Bus final : public SignalData
{
public:
    _Bus(QString name, WaveMonitor::DataFormat::Type format, QList<QBitArray> members);

    [[nodiscard]] QString name() const override { return m_name; }
    [[nodiscard]] QString value(int sample) const override;
    [[nodiscard]] int size() const override;
    [[nodiscard]] bool isBus() const override { return true; }
    [[nodiscard]] QList<QBitArray> rows() const override { return m_members; }
    [[nodiscard]] WaveMonitor::DataFormat::Type format() const override { return m_format; }

private:
    WaveMonitor::DataFormat::Type m_format;
    QString m_name;
    QList<QBitArray> m_members; ///< most significant first
};

} // namespace KEO
