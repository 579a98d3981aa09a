#pragma once

#include <wave/signalelement.h>
#include <wave/windowcontents.h>

#include <QBitArray>
#include <QList>

namespace KEO {

struct CoreConfig;

/// Cuts the raw sections of one capture window, in the order in which the data manager hands them
/// out, into one element for each captured bit of \a core: ids from 0 in flat signal order, sample
/// 0 the oldest. Empty if there is no core or no whole row in the sections.
QList<WaveMonitor::SignalElement> extractSignalData(const CoreConfig *core,
                                                    const QList<QBitArray> &sections);

/// Fills \a contents as a fresh capture shows them: the core's signals and buses as rows in the
/// order of the description, and its trigger position. \a elements are those of extractSignalData;
/// the samples are shared, not copied.
void fillWindow(WaveMonitor::WindowContents &contents, const CoreConfig &core,
                QList<WaveMonitor::SignalElement> elements);

} // namespace KEO
