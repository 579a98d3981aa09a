#pragma once

#include <wave/common/localized.h>

#include <QHeaderView>

namespace WaveMonitor {

/// The header of the tree, of a fixed height that puts the first row beside the first wave row.
class SignalHeaderView final : public QHeaderView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
    explicit SignalHeaderView(QWidget *parent);

    [[nodiscard]] QSize sizeHint() const override;
};

} // namespace WaveMonitor
