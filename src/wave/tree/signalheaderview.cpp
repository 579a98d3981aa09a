#include "signalheaderview.h"

#include <wave/common/viewergeometry.h>

namespace WaveMonitor {

SignalHeaderView::SignalHeaderView(QWidget *parent) : QHeaderView(Qt::Horizontal, parent)
{
    setCascadingSectionResizes(true);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

QSize SignalHeaderView::sizeHint() const
{
    return {QHeaderView::sizeHint().width(), kHeaderHeight};
}

} // namespace WaveMonitor
