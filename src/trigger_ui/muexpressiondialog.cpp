#include "muexpressiondialog.h"

#include <widgets/formwidgets.h>
#include <widgets/messagebox.h>

#include <QAction>
#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

namespace {

constexpr int kUnitColumns = 4; // of the pad; the operators stand to their right

QString unitToken(int unit)
{
    return QStringLiteral("M%1").arg(unit);
}

QFont displayFont()
{
    QFont font(QStringLiteral("Courier"), 16, QFont::Bold);
    font.setStyleHint(QFont::TypeWriter); // where there is no Courier
    return font;
}

/// What a key types, if it is no command.
QString typedText(const QKeyEvent &event)
{
    if (event.key() == Qt::Key_Dead_Circumflex) // how many keyboards write "^"
        return QStringLiteral("^");
    const QString text = event.text();
    const bool isPrintable =
        std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isPrint(); });
    const bool isOperator = text.size() == 1 && QStringLiteral("!&^|()").contains(text);
    const bool isCommand = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    return isPrintable && (isOperator || !isCommand) ? text : QString();
}

} // namespace

MuExpressionDialog::MuExpressionDialog(QWidget *parent)
    : QDialog(parent), m_editDisplay(new QLineEdit(this)), m_reason(new QLabel(this))
{
    setWindowTitle(tr("Expression"));
    m_editDisplay->setObjectName(QStringLiteral("editDisplay"));
    m_editDisplay->setReadOnly(true);
    m_editDisplay->setFont(displayFont());
    m_editDisplay->setAccessibleName(tr("Expression"));
    m_editDisplay->setToolTip(tr("Press the buttons, or type: M0 to M15 ! & ^ | ( )"));

    m_editDisplay->installEventFilter(this);
    addClipboardActions();

    m_reason->setObjectName(QStringLiteral("lbReason"));
    m_reason->setTextFormat(Qt::PlainText);
    m_reason->setWordWrap(true);
    m_reason->setMinimumHeight(2 * m_reason->fontMetrics().lineSpacing()); // or the pad would jump

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_editDisplay);
    layout->addWidget(m_reason);
    layout->addLayout(makePad());
    layout->addStretch();
    addOkAndCancel(*this, *layout);
    m_editDisplay->setFocus();
}

void MuExpressionDialog::addClipboardActions()
{
    auto *copyAction = new QAction(tr("&Copy"), m_editDisplay);
    auto *pasteAction = new QAction(tr("&Paste"), m_editDisplay);
    connect(copyAction, &QAction::triggered, this, &MuExpressionDialog::copy);
    connect(pasteAction, &QAction::triggered, this, &MuExpressionDialog::paste);
    m_editDisplay->addActions({copyAction, pasteAction});
    m_editDisplay->setContextMenuPolicy(Qt::ActionsContextMenu);
}

QGridLayout *MuExpressionDialog::makePad()
{
    auto *pad = new QGridLayout;
    for (int unit = 0; unit < kUnits; ++unit) {
        m_unitButtons[unit] = addTokenButton(QStringLiteral("btnM%1").arg(unit), unitToken(unit));
        pad->addWidget(m_unitButtons[unit], unit / kUnitColumns, unit % kUnitColumns);
    }
    const int left = kUnitColumns;
    const int right = kUnitColumns + 1;
    pad->addWidget(addTokenButton(QStringLiteral("btnAND"), QStringLiteral("&")), 0, left);
    pad->addWidget(addTokenButton(QStringLiteral("btnOR"), QStringLiteral("|")), 0, right);
    pad->addWidget(addTokenButton(QStringLiteral("btnNOT"), QStringLiteral("!")), 1, left);
    pad->addWidget(addTokenButton(QStringLiteral("btnXOR"), QStringLiteral("^")), 1, right);
    pad->addWidget(addTokenButton(QStringLiteral("btnLeftBracket"), QStringLiteral("(")), 2, left);
    pad->addWidget(addTokenButton(QStringLiteral("btnRightBracket"), QStringLiteral(")")), 2,
                   right);

    auto *backspace = addEditButton(QStringLiteral("btnBackspace"), QStringLiteral("\u2190"),
                                    tr("Remove the last token (Backspace)"));
    auto *clear = addEditButton(QStringLiteral("btnClear"), tr("C"), tr("Remove all (Delete)"));
    connect(backspace, &QPushButton::clicked, this, &MuExpressionDialog::backspaceClicked);
    connect(clear, &QPushButton::clicked, this, &MuExpressionDialog::clearAllClicked);
    pad->addWidget(backspace, 3, left);
    pad->addWidget(clear, 3, right);
    return pad;
}

QPushButton *MuExpressionDialog::addTokenButton(const QString &objectName, const QString &token)
{
    QString text = token;
    auto *button = new QPushButton(text.replace(u'&', QStringLiteral("&&")), this);
    button->setObjectName(objectName);
    button->setAutoDefault(false);       // Enter means OK wherever the focus is
    button->setFocusPolicy(Qt::NoFocus); // or a typed blank would press it
    connect(button, &QPushButton::clicked, this, [this, token] { expBtnClicked(token); });
    return button;
}

QPushButton *MuExpressionDialog::addEditButton(const QString &objectName, const QString &text,
                                               const QString &tip)
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(objectName);
    button->setAutoDefault(false);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    return button;
}

void MuExpressionDialog::setUnitButtons(const QList<bool> &flags)
{
    m_flags = flags.first(std::min(int(flags.size()), kUnits));
    const int count = int(m_flags.size());
    for (int unit = 0; unit < count; ++unit)
        m_unitButtons[unit]->setEnabled(flags[unit]);
}

bool MuExpressionDialog::isExpressionValid() const
{
    return expressionFault(m_input.tokens(), m_flags).isEmpty() &&
           KEO::isExpressionValid(m_input.tokens());
}

QString MuExpressionDialog::editExpressionText(const QList<bool> &flags, QWidget *parent)
{
    // On the heap: the parent may be gone when the dialog returns, and the dialog with it.
    const QPointer<MuExpressionDialog> dialog = new MuExpressionDialog(parent);
    dialog->setUnitButtons(flags);
    const int result = dialog->exec();
    if (!dialog)
        return {};
    const QString text = dialog->m_editDisplay->text();
    delete dialog;
    return result == Accepted ? text : QString();
}

void MuExpressionDialog::accept()
{
    if (isExpressionValid()) {
        QDialog::accept();
        return;
    }
    showTokens(Tell::All);
    showBox(QMessageBox::Critical, this, tr("Error"), tr("Please input the right expression"));
}

bool MuExpressionDialog::eventFilter(QObject *watched, QEvent *event)
{
    // A line to be read would swallow some keys, such as those for Paste.
    if (watched == m_editDisplay && event->type() == QEvent::KeyPress &&
        takeKey(*static_cast<QKeyEvent *>(event)))
        return true;
    return QDialog::eventFilter(watched, event);
}

void MuExpressionDialog::keyPressEvent(QKeyEvent *event)
{
    if (!takeKey(*event))
        QDialog::keyPressEvent(event);
}

bool MuExpressionDialog::takeKey(const QKeyEvent &event)
{
    if (event.matches(QKeySequence::Paste)) {
        paste();
    } else if (event.matches(QKeySequence::Copy)) {
        copy();
    } else if (event.key() == Qt::Key_Backspace) {
        backspaceClicked();
    } else if (event.key() == Qt::Key_Delete) {
        clearAllClicked();
    } else if (const QString text = typedText(event); !text.isEmpty()) {
        m_input.type(text);
        showTokens();
    } else {
        return false;
    }
    return true;
}

void MuExpressionDialog::copy() const
{
    const QString text =
        m_editDisplay->hasSelectedText() ? m_editDisplay->selectedText() : m_editDisplay->text();
    if (!text.isEmpty())
        QGuiApplication::clipboard()->setText(text);
}

void MuExpressionDialog::paste()
{
    const QString text = QGuiApplication::clipboard()->text();
    if (text.size() > ExpressionInput::kMaxPasted) {
        m_reason->setText(
            tr("The clipboard holds %1 characters, too many for an expression.").arg(text.size()));
        return;
    }
    // What was typed before ends here: "M1" and a pasted "2" are two units.
    m_input.type(u' ');
    m_input.type(withUnitNames(text));
    m_input.type(u' ');
    showTokens();
}

void MuExpressionDialog::expBtnClicked(const QString &exp)
{
    m_input.append(exp);
    showTokens();
}

void MuExpressionDialog::backspaceClicked()
{
    m_input.removeLast();
    showTokens();
}

void MuExpressionDialog::clearAllClicked()
{
    m_input.clear();
    showTokens();
}

void MuExpressionDialog::showTokens(Tell tell)
{
    m_editDisplay->setText(m_input.tokens().join(QString()));
    QStringList told = m_input.tokens();
    if (tell == Tell::Names) {
        if (m_input.isNameBegun())
            told.removeLast();
        m_reason->setText(tokenFault(told, m_flags));
    } else {
        m_reason->setText(expressionFault(told, m_flags));
    }
}

} // namespace KEO
