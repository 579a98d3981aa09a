#pragma once

#include <QBitArray>
#include <QList>
#include <QString>

namespace KEO {

struct CoreConfig;
struct LiteCoreConfig;

/// How the samples of one capture window lie in the raw bits that a core delivers.
struct CaptureGeometry
{
    qsizetype columns = 0;       ///< captured bits; a row has one more, the marker, in front
    qsizetype registerWidth = 0; ///< bits from one row to the next
    qint64 captureAmount = 0;    ///< most rows to take
    qint64 triggerPosition = 0;  ///< samples before the trigger
    bool dynamic = false;        ///< the core writes its marker one row later

    bool operator==(const CaptureGeometry &other) const = default;
};

/// The geometry that \a core has at this moment.
CaptureGeometry captureGeometry(const CoreConfig &core);

/// Cuts the raw bits of one window into samples: one bit array for each captured bit, bit i of it
/// being sample i, the oldest sample first. \a sections are the pieces of the window in list order;
/// joined, they hold the row of the highest memory address first, and rows end together with them.
///
/// The capture memory is a ring. The core marks a row shortly after the trigger; from the marker
/// and the trigger position follows the oldest row. Too few bits give fewer samples, and bits that
/// the last row lacks are clear. The result is empty when there is no row, no column, or a geometry
/// whose rows overlap.
QList<QBitArray> cutSamples(const QList<QBitArray> &sections, const CaptureGeometry &geometry);

/// How the samples of a lite core lie in its raw bits: rows without marker and filling.
struct PlainGeometry
{
    enum class FirstRow { Oldest, Newest };

    qsizetype columns = 0;    ///< captured bits, which are also the bits from one row to the next
    qint64 captureAmount = 0; ///< most rows to take
    FirstRow firstRow = FirstRow::Oldest; ///< what the row of the lowest memory address holds

    bool operator==(const PlainGeometry &other) const = default;
};

/// Whether the geometry of \a core depends on the model of the chip.
bool dependsOnDevice(const LiteCoreConfig &core, bool isZeo);
/// The geometry that \a core has in a chip of that model, described by a .keo or a .zeo file.
PlainGeometry plainGeometry(const LiteCoreConfig &core, const QString &deviceModel, bool isZeo);

/// As above for a lite core: \a sections hold the row of the highest memory address first as well,
/// but the memory is filled from its first row on, so nothing has to be found.
QList<QBitArray> cutPlainSamples(const QList<QBitArray> &sections, const PlainGeometry &geometry);

} // namespace KEO
