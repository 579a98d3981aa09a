#include "signaltreeitemdelegate.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QToolTip>

#include <algorithm>

namespace WaveMonitor {

namespace {

bool isAllowed(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z') ||
           (character >= u'0' && character <= u'9') || QStringLiteral("_:[]").contains(character);
}

bool isAllowed(const QString &name)
{
    return std::ranges::all_of(name, [](QChar character) { return isAllowed(character); });
}

void tell(const QWidget &editor, const QString &text)
{
    QToolTip::showText(editor.mapToGlobal(QPoint(0, editor.height())), text);
}

/// Takes the name that the row has as it is; any other keeps to the rule, in which what came by the
/// clipboard or stood there before is mended at the end.
class NameValidator final : public QRegularExpressionValidator
{
public:
    NameValidator(const QString &present, QWidget *editor)
        : QRegularExpressionValidator(
              QRegularExpression(QStringLiteral(R"(^[a-zA-Z0-9_\:\[\]]*$)")), editor),
          m_present(present),
          m_editor(editor)
    {
    }

    State validate(QString &name, int &position) const override
    {
        if (name == m_present)
            return Acceptable;
        const State state = QRegularExpressionValidator::validate(name, position);
        return state == Invalid ? Intermediate : state;
    }
    void fixup(QString &name) const override
    {
        std::ranges::replace_if(
            name, [](QChar character) { return !isAllowed(character); }, u'_');
        tell(*m_editor, SignalTreeItemDelegate::tr("The name became %1: it may hold letters, "
                                                   "digits, _, :, [ and ].")
                            .arg(name));
    }

private:
    QString m_present;
    QWidget *m_editor; // owns this object
};

/// Leaves out what is typed and not allowed, and says so.
class NameEdit final : public QLineEdit
{
public:
    using QLineEdit::QLineEdit;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        const QString typed = event->text();
        const bool isCommand = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier);
        if (isCommand || typed.isEmpty() || !typed.at(0).isPrint() || isAllowed(typed)) {
            QLineEdit::keyPressEvent(event);
            return;
        }
        tell(*this, SignalTreeItemDelegate::tr("A name holds letters, digits, _, :, [ and ]."));
        event->accept();
    }
};

} // namespace

QWidget *SignalTreeItemDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                              const QModelIndex &index) const
{
    if (!index.isValid())
        return QStyledItemDelegate::createEditor(parent, option, index);
    auto *editor = new NameEdit(parent);
    editor->setObjectName(QStringLiteral("editName"));
    editor->setValidator(new NameValidator(index.data(Qt::DisplayRole).toString(), editor));
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
    else if (isAllowed(lineEdit->text())) // else it is the old name, of the core description
        model->setData(index, lineEdit->text(), Qt::EditRole);
}

} // namespace WaveMonitor
