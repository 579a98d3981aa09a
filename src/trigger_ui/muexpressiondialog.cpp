#include "muexpressiondialog.h"

#include <trigger/expression.h>
#include <widgets/formwidgets.h>
#include <widgets/messagebox.h>

#include <QGridLayout>
#include <QKeyEvent>
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

} // namespace

MuExpressionDialog::MuExpressionDialog(QWidget *parent)
    : QDialog(parent), m_editDisplay(new QLineEdit(this))
{
    setWindowTitle(tr("Expression"));
    m_editDisplay->setObjectName(QStringLiteral("editDisplay"));
    m_editDisplay->setReadOnly(true);
    m_editDisplay->setFocusPolicy(Qt::NoFocus); // keys are for the pad
    m_editDisplay->setFont(displayFont());
    m_editDisplay->setAccessibleName(tr("Expression"));
    m_editDisplay->setToolTip(tr("Press the buttons, or type: M0 to M15 ! & ^ | ( )"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_editDisplay);
    layout->addLayout(makePad());
    layout->addStretch();
    addOkAndCancel(*this, *layout);
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
    button->setAutoDefault(false); // Enter means OK wherever the focus is
    connect(button, &QPushButton::clicked, this, [this, token] { expBtnClicked(token); });
    return button;
}

QPushButton *MuExpressionDialog::addEditButton(const QString &objectName, const QString &text,
                                               const QString &tip)
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(objectName);
    button->setAutoDefault(false);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    return button;
}

void MuExpressionDialog::setUnitButtons(const QList<bool> &flags)
{
    const int count = std::min(int(flags.size()), kUnits);
    for (int unit = 0; unit < count; ++unit)
        m_unitButtons[unit]->setEnabled(flags[unit]);
}

bool MuExpressionDialog::isExpressionValid() const
{
    return KEO::isExpressionValid(m_tokens);
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
    if (isExpressionValid())
        QDialog::accept();
    else
        showBox(QMessageBox::Critical, this, tr("Error"), tr("Please input the right expression"));
}

void MuExpressionDialog::keyPressEvent(QKeyEvent *event)
{
    const QString text = event->text();
    const QChar key = text.size() == 1 ? text[0] : QChar();
    if (event->key() == Qt::Key_Backspace)
        backspaceClicked();
    else if (event->key() == Qt::Key_Delete)
        clearAllClicked();
    else if (!key.isNull() && QStringLiteral("!&^|()").contains(key))
        expBtnClicked(key);
    else if (key >= u'0' && key <= u'9')
        typeDigit(key.digitValue());
    else if (key == u'M' || key == u'm')
        m_unitOneTyped = false; // the name of another unit begins
    else
        QDialog::keyPressEvent(event);
}

void MuExpressionDialog::typeDigit(int digit)
{
    // "1" may be M1 or the beginning of M10 to M15: it is taken as M1 until the next digit comes.
    int unit = digit;
    if (m_unitOneTyped && 10 + digit < kUnits && m_unitButtons[10 + digit]->isEnabled()) {
        unit = 10 + digit;
        if (m_unitButtons[1]->isEnabled())
            backspaceClicked();
    }
    if (m_unitButtons[unit]->isEnabled())
        expBtnClicked(unitToken(unit));
    m_unitOneTyped = unit == 1;
}

void MuExpressionDialog::expBtnClicked(QString exp)
{
    m_tokens.append(exp);
    showTokens();
}

void MuExpressionDialog::backspaceClicked()
{
    if (!m_tokens.isEmpty())
        m_tokens.removeLast();
    showTokens();
}

void MuExpressionDialog::clearAllClicked()
{
    m_tokens.clear();
    showTokens();
}

void MuExpressionDialog::showTokens()
{
    m_unitOneTyped = false;
    m_editDisplay->setText(m_tokens.join(QString()));
}

} // namespace KEO
