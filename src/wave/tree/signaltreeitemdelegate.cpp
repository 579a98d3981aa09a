#include "signaltreeitemdelegate.h"

#include <QLineEdit>
#include <QRegularExpressionValidator>

namespace WaveMonitor {

QWidget *SignalTreeItemDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                              const QModelIndex &index) const
{
    if (!index.isValid())
        return QStyledItemDelegate::createEditor(parent, option, index);
    static const QRegularExpression name(QStringLiteral(R"(^[a-zA-Z0-9_\:\[\]]*$)"));
    auto *editor = new QLineEdit(parent);
    editor->setObjectName(QStringLiteral("editName"));
    editor->setValidator(new QRegularExpressionValidator(name, editor));
    return editor;
}

void SignalTreeItemDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *lineEdit = qobject_cast<QLineEdit *>(editor);
    if (!index.isValid() || !lineEdit)
        QStyledItemDelegate::setEditorData(editor, index);
    else
        lineEdit->setText(index.data(Qt::DisplayRole).toString());
}

void SignalTreeItemDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                          const QModelIndex &index) const
{
    auto *lineEdit = qobject_cast<QLineEdit *>(editor);
    if (!index.isValid() || !lineEdit)
        QStyledItemDelegate::setModelData(editor, model, index);
    else
        model->setData(index, lineEdit->text(), Qt::EditRole);
}

} // namespace WaveMonitor
