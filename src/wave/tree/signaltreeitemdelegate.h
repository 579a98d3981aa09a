#pragma once

#include <QStyledItemDelegate>

namespace WaveMonitor {

/// Edits a row's name: letters, digits, underscore, colon and square brackets. Anything else can't
/// be typed; what comes in otherwise turns into underscores at the end. A tool tip tells of both.
class SignalTreeItemDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
};

} // namespace WaveMonitor
