#include "keoprogrammeritemdelegate.h"

#include "fsfileedit.h"
#include "keoprogrammermodel.h"

#include <programmer/devicedatabase.h>

#include <QAbstractItemView>
#include <QComboBox>
#include <QSpinBox>

namespace KEO {

namespace {

constexpr int kMaxIrCode = 65535;
constexpr char kChosen[] = "chosen"; // property of a combo box
constexpr char kShown[] = "shown";   // of a spin box: the text that it was given

const KeoProgrammerModel *modelOf(const QModelIndex &index)
{
    return qobject_cast<const KeoProgrammerModel *>(index.model());
}

bool hasUserInput(const QWidget &editor)
{
    if (const auto *edit = qobject_cast<const FsFileEdit *>(&editor))
        return edit->isModified();
    if (const auto *spinBox = qobject_cast<const QSpinBox *>(&editor)) {
        const QVariant shown = spinBox->property(kShown);
        return shown.isValid() && shown.toString() != spinBox->text();
    }
    return editor.property(kChosen).toBool();
}

} // namespace

QWidget *KeoProgrammerItemDelegate::createEditor(QWidget *parent,
                                                 const QStyleOptionViewItem &option,
                                                 const QModelIndex &index) const
{
    const KeoProgrammerModel *model = modelOf(index);
    if (!model)
        return QStyledItemDelegate::createEditor(parent, option, index);
    switch (index.column()) {
    case KeoProgrammerModel::Series:
        return createCombo(parent, model->database().seriesNames());
    case KeoProgrammerModel::Device: {
        const QString series = model->rows().at(index.row()).series;
        return createCombo(parent, series.isEmpty() ? QStringList(QStringLiteral("JTAG_NOP"))
                                                    : model->database().deviceNames(series));
    }
    case KeoProgrammerModel::FsFile: {
        auto *edit = new FsFileEdit(parent);
        const auto *view = qobject_cast<const QAbstractItemView *>(option.widget);
        const QPersistentModelIndex place(index);
        connect(edit, &FsFileEdit::finished, this, [this, edit, view, place] {
            // A view that closes its editor takes the focus from it, too.
            if (view && view->indexWidget(place) == edit)
                const_cast<KeoProgrammerItemDelegate *>(this)->finish(edit);
        });
        return edit;
    }
    case KeoProgrammerModel::IrCode: {
        auto *spinBox = new QSpinBox(parent);
        spinBox->setRange(0, kMaxIrCode);
        return spinBox;
    }
    default:
        return QStyledItemDelegate::createEditor(parent, option, index);
    }
}

QWidget *KeoProgrammerItemDelegate::createCombo(QWidget *parent, const QStringList &entries) const
{
    auto *combo = new QComboBox(parent);
    combo->addItems(entries);
    connect(combo, &QComboBox::activated, combo, [combo] { combo->setProperty(kChosen, true); });
    return combo;
}

void KeoProgrammerItemDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    // Also when the row changes beside an open editor, as it does when the tool flow writes its
    // bitstream anew: what the user has done there by then stays.
    if (hasUserInput(*editor))
        return;
    if (auto *combo = qobject_cast<QComboBox *>(editor)) {
        combo->setCurrentIndex(combo->findText(index.data(Qt::EditRole).toString()));
    } else if (auto *spinBox = qobject_cast<QSpinBox *>(editor)) {
        spinBox->setValue(index.data(Qt::EditRole).toInt());
        spinBox->setProperty(kShown, spinBox->text());
    } else if (auto *edit = qobject_cast<FsFileEdit *>(editor)) {
        edit->setPath(index.data(Qt::EditRole).toString());
    } else {
        QStyledItemDelegate::setEditorData(editor, index);
    }
}

void KeoProgrammerItemDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                             const QModelIndex &index) const
{
    if (auto *combo = qobject_cast<QComboBox *>(editor)) {
        if (combo->property(kChosen).toBool())
            model->setData(index, combo->currentIndex(), Qt::EditRole);
    } else if (auto *spinBox = qobject_cast<QSpinBox *>(editor)) {
        spinBox->interpretText();
        model->setData(index, spinBox->value(), Qt::EditRole);
    } else if (auto *edit = qobject_cast<FsFileEdit *>(editor)) {
        if (edit->path() != index.data(Qt::EditRole).toString())
            model->setData(index, edit->path(), Qt::EditRole);
    } else {
        QStyledItemDelegate::setModelData(editor, model, index);
    }
}

void KeoProgrammerItemDelegate::finish(QWidget *editor)
{
    Q_EMIT commitData(editor);
    Q_EMIT closeEditor(editor);
}

void KeoProgrammerItemDelegate::initStyleOption(QStyleOptionViewItem *option,
                                                const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() == KeoProgrammerModel::FsFile)
        option->textElideMode = Qt::ElideLeft; // the name says more than the folder
}

} // namespace KEO
