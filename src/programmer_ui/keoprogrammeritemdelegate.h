#pragma once

#include <QStyledItemDelegate>

namespace KEO {

class KeoProgrammerModel;

/// The editors of the device table: combo boxes for series and device, a path with a file dialog,
/// a spin box for the register code. For a view that shows a KeoProgrammerModel.
class KeoProgrammerItemDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    /// A combo box counts only if the user has chosen an entry: the first series has a meaning of
    /// its own, which nobody should get by looking into the list.
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;

    /// Takes what \a editor, which is open in the view, holds and closes it.
    void finish(QWidget *editor);

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    [[nodiscard]] QWidget *createCombo(QWidget *parent, const QStringList &entries) const;
};

} // namespace KEO
