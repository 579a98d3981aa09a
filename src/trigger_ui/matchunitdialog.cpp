#include "matchunitdialog.h"

#include "valuefield.h"
#include "valuepaste.h"
#include "valuereadout.h"

#include <config/coreconfig.h>
#include <trigger/matchvalue.h>
#include <trigger/valuetext.h>
#include <widgets/messagebox.h>
#include <widgets/plaintip.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QScreen>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStyleOptionFrame>
#include <QTreeWidget>

#include <algorithm>

namespace KEO {

namespace {

QTreeWidgetItem *itemOf(const SignalEntry &entry)
{
    auto *item = new QTreeWidgetItem({entry.text.isEmpty() ? entry.name : entry.text});
    item->setToolTip(0, plainTip(item->text(0)));
    for (const SignalEntry &member : entry.members)
        item->addChild(itemOf(member));
    return item;
}

/// Counts that a counter of \a width bits reaches. A description may hold any width.
int countsOf(int width)
{
    return 1 << std::clamp(width, 0, 30);
}

/// Puts \a value into a field with the cursor before it, where typing begins: the mask is full.
void showValue(QLineEdit *field, const QString &value)
{
    field->setText(value);
    field->setCursorPosition(0);
}

bool isOfDigits(const QString &value)
{
    return std::all_of(value.cbegin(), value.cend(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F');
    });
}

/// Width in pixels of a field that shows \a digits digits of its font at once.
int widthForDigits(const QLineEdit *field, int digits)
{
    constexpr int kSpareDigits = 2; // the field's inner margins and the cursor
    QStyleOptionFrame option;
    option.initFrom(field);
    option.lineWidth = field->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, field);
    const QSize content(field->fontMetrics().horizontalAdvance(u'0') * (digits + kSpareDigits),
                        field->fontMetrics().height());
    return field->style()->sizeFromContents(QStyle::CT_LineEdit, &option, content, field).width();
}

} // namespace

MatchUnitDialog::MatchUnitDialog(MatchUnit *unit, bool readOnlyMode, QWidget *parent)
    : QDialog(parent),
      m_unit(unit),
      m_core(unit->core),
      m_readOnlyMode(readOnlyMode),
      m_validator(new QRegularExpressionValidator(this)),
      m_form(*this)
{
    setWindowTitle(tr("Match Unit Config"));
    showUnit();
    showCounter();
    connectSlots();
    if (m_readOnlyMode)
        freezeStructure();
    updateReadout();
}

void MatchUnitDialog::showUnit()
{
    m_form.lbTitle->setText(tr("Match Unit %1").arg(m_unit->index));
    for (const MatchType type : matchTypes())
        m_form.comboBoxType->addItem(matchTypeText(type), int(type));
    for (const TriggerPort *port : m_core->portsWithSignals())
        m_form.comboBoxTrigger->addItem(tr("Trigger Port %1").arg(port->index), port->index);
    m_form.rbtnBin->setChecked(true);

    if (m_unit->trigger && !m_unit->trigger->signals.isEmpty())
        m_port = m_unit->trigger;
    m_form.comboBoxTrigger->setCurrentIndex(m_port ? m_form.comboBoxTrigger->findData(m_port->index)
                                                   : -1);
    m_form.widgetRight->setEnabled(m_port);
    fillSignals();

    m_type = m_unit->match_type;
    m_func = m_unit->func;
    m_form.comboBoxType->setCurrentIndex(m_form.comboBoxType->findData(int(m_type)));
    fillFunctions();
    m_form.comboBoxFunc->setCurrentIndex(m_form.comboBoxFunc->findData(int(m_func)));
    showSecondValue();

    applyRadixAndFunction();
    if (m_port) {
        // A shorter value from a file means its number: that is how the core gets it.
        showValue(m_form.lineEditValue0, m_unit->value0.rightJustified(portWidth(), u'0'));
        showValue(m_form.lineEditValue1, m_unit->value1.rightJustified(portWidth(), u'0'));
        m_stories[0].begin(m_unit->value0);
        m_stories[1].begin(m_unit->value1);
    }
    toolTipValueChanged(calculatedBitwidth());
}

void MatchUnitDialog::showCounter()
{
    m_form.groupBoxCounter->setChecked(m_unit->counter_enable);
    m_form.spinBoxCounterWidth->setValue(m_unit->counter_width);
    m_form.spinBoxCounter->setMaximum(countsOf(m_unit->counter_width));
    m_form.spinBoxCounter->setValue(m_unit->counter);
    m_form.checkBoxContinuous->setChecked(m_unit->countinuous);
}

void MatchUnitDialog::freezeStructure()
{
    m_form.comboBoxTrigger->setEnabled(false);
    m_form.comboBoxType->setEnabled(false);
    m_form.groupBoxCounter->setCheckable(false);
    m_form.groupBoxCounter->setEnabled(m_unit->counter_enable);
    m_form.spinBoxCounterWidth->setEnabled(false);
    m_form.lineEditValue0->setFocus(); // what is left to change is above all the value
}

void MatchUnitDialog::connectSlots()
{
    connect(m_form.comboBoxTrigger, &QComboBox::currentIndexChanged, this,
            &MatchUnitDialog::onTriggerChanged);
    connect(m_form.comboBoxType, &QComboBox::currentIndexChanged, this,
            &MatchUnitDialog::onTypeChanged);
    connect(m_form.comboBoxFunc, &QComboBox::currentIndexChanged, this,
            &MatchUnitDialog::onFuncChanged);
    for (QRadioButton *button : {m_form.rbtnBin, m_form.rbtnOct, m_form.rbtnDec, m_form.rbtnHex})
        connect(button, &QRadioButton::toggled, this, &MatchUnitDialog::onBaseChanged);
    connect(m_form.spinBoxCounterWidth, &QSpinBox::valueChanged, this,
            &MatchUnitDialog::onCounterWidthChanged);
    connect(m_form.spinBoxCounter, &QSpinBox::valueChanged, this, &MatchUnitDialog::updateReadout);
    for (const int field : {0, 1}) {
        auto *edit = static_cast<ValueField *>(fields()[field]);
        connect(edit, &QLineEdit::textEdited, this, [this, field, edit] {
            m_stories[field].typed(edit->displayText(), edit->cursorPosition());
            updateReadout();
        });
        connect(edit, &QLineEdit::textChanged, this, &MatchUnitDialog::updateReadout);
        connect(edit, &QLineEdit::cursorPositionChanged, this, [this, field] {
            m_cursorField = field;
            m_form.readout->showSignal(signalAtCursor());
        });
        connect(edit, &ValueField::pasteAsked, this,
                [this, field](const QString &text) { paste(field, text); });
    }
}

void MatchUnitDialog::onTriggerChanged()
{
    const bool selected = m_form.comboBoxTrigger->currentIndex() >= 0;
    m_port =
        selected ? m_core->triggerByIndex(m_form.comboBoxTrigger->currentData().toInt()) : nullptr;
    m_form.widgetRight->setEnabled(m_port);
    fillSignals();

    const FieldTexts saved = fieldTexts();
    applyRadixAndFunction();
    const int digits = calculatedBitwidth();
    showValue(m_form.lineEditValue0, fitDigits(saved.value0, digits));
    showValue(m_form.lineEditValue1, fitDigits(saved.value1, digits));
    toolTipValueChanged(digits);
    m_stories = {};
    updateReadout();
}

void MatchUnitDialog::onTypeChanged()
{
    m_type = MatchType(m_form.comboBoxType->currentData().toInt());
    {
        const QSignalBlocker blocker(m_form.comboBoxFunc);
        fillFunctions();
        m_form.comboBoxFunc->setCurrentIndex(
            std::max(m_form.comboBoxFunc->findData(int(m_func)), 0));
    }
    onFuncChanged();
}

void MatchUnitDialog::onFuncChanged()
{
    m_func = MatchFunction(m_form.comboBoxFunc->currentData().toInt());
    showSecondValue();
    const FieldTexts saved = fieldTexts();
    applyRadixAndFunction();
    restoreMatching(saved);
    const FieldTexts kept = fieldTexts();
    const auto tell = [](ValueStory &story, const QString &before, const QString &now) {
        if (before != now)
            story.replaced(
                tr("“%1” has what this function does not take: zeros.").arg(shortened(before)));
    };
    tell(m_stories[0], saved.value0, kept.value0);
    tell(m_stories[1], saved.value1, kept.value1);
    updateReadout();
}

void MatchUnitDialog::onBaseChanged()
{
    const int oldBase = m_base;
    if (m_form.rbtnBin->isChecked())
        m_base = 2;
    else if (m_form.rbtnHex->isChecked())
        m_base = 16;
    else if (m_form.rbtnOct->isChecked())
        m_base = 8;
    else if (m_form.rbtnDec->isChecked())
        m_base = 10;

    const int digits = calculatedBitwidth();
    const auto converted = [this, oldBase, digits](const QString &text) {
        return fitDigits(baseConvert(text, oldBase, m_base, digits), digits);
    };
    const FieldTexts old = fieldTexts();
    const FieldTexts texts{converted(old.value0), converted(old.value1)};
    applyRadixAndFunction();
    restoreMatching(texts);
    toolTipValueChanged(digits);
    const auto tell = [oldBase](ValueStory &story, const QString &before) {
        const QString reason =
            isConvertible(before, oldBase) ? story.told()
            : isOfDigits(before)
                ? tr("“%1” has more than 64 bits, which no radix takes over: zeros.")
                      .arg(shortened(before))
                : tr("“%1” has letters, which only BIN has: zeros.").arg(shortened(before));
        story.replaced(reason);
    };
    if (oldBase != m_base) {
        tell(m_stories[0], old.value0);
        tell(m_stories[1], old.value1);
    }
    updateReadout();
}

void MatchUnitDialog::onCounterWidthChanged()
{
    m_form.spinBoxCounter->setMaximum(countsOf(m_form.spinBoxCounterWidth->value()));
    updateReadout();
}

int MatchUnitDialog::calculatedBitwidth() const
{
    return m_port ? valueDigits(portWidth(), m_base) : 0;
}

void MatchUnitDialog::toolTipValueChanged(int rw)
{
    if (!m_port || rw == 0)
        return;
    const QString range = valueRange(portWidth(), m_base);
    m_form.lineEditValue0->setToolTip(range);
    m_form.lineEditValue1->setToolTip(range);
}

void MatchUnitDialog::accept()
{
    if (!m_port) {
        QDialog::accept();
        return;
    }
    const FieldTexts texts = fieldTexts();
    const BinaryValues values =
        binaryValues(texts.value0, texts.value1, m_base, portWidth(), m_func);
    switch (values.problem) {
    case ValueProblem::TooWide:
        warn(tr("value is more than effective width."));
        return;
    case ValueProblem::MaximumBelowMinimum:
        warn(tr("Maximum value is less than minimum value."));
        return;
    case ValueProblem::None:
        break;
    }
    store(values.value0, values.value1);
    QDialog::accept();
}

int MatchUnitDialog::portWidth() const
{
    return int(signalBits(m_port->signals));
}

void MatchUnitDialog::fillSignals()
{
    m_form.treeSignals->clear();
    if (!m_port)
        return;
    QList<QTreeWidgetItem *> items;
    for (const SignalEntry &entry : m_port->signals)
        items.append(itemOf(entry));
    m_form.treeSignals->addTopLevelItems(items);
    widenFields();
}

void MatchUnitDialog::fillFunctions()
{
    m_form.comboBoxFunc->clear();
    for (const MatchFunction function : functionsForMatchType(m_type))
        m_form.comboBoxFunc->addItem(matchFunctionText(function), int(function));
}

void MatchUnitDialog::showSecondValue()
{
    const bool range = isRangeFunction(m_func);
    m_form.lbValue0->setVisible(range);
    m_form.lbValue1->setVisible(range);
    m_form.lineEditValue1->setVisible(range);
}

void MatchUnitDialog::applyRadixAndFunction()
{
    if (!m_port)
        return;
    const QString mask = valueMask(calculatedBitwidth());
    m_validator->setRegularExpression(QRegularExpression(
        valuePattern(m_base, m_func, m_type), QRegularExpression::CaseInsensitiveOption));
    for (QLineEdit *field : {m_form.lineEditValue0, m_form.lineEditValue1}) {
        field->clear();
        field->setInputMask(QString());
        field->setInputMask(mask);
        field->setValidator(m_validator);
    }
}

void MatchUnitDialog::widenFields()
{
    // Wide enough for radix 2, so that the dialog keeps still when the radix changes.
    const int limit = screen()->availableGeometry().width() / 2;
    for (QLineEdit *field : {m_form.lineEditValue0, m_form.lineEditValue1})
        field->setMinimumWidth(std::min(widthForDigits(field, portWidth()), limit));
}

MatchUnitDialog::FieldTexts MatchUnitDialog::fieldTexts() const
{
    // Not text(): that drops every "0", the mask's filler.
    return {m_form.lineEditValue0->displayText(), m_form.lineEditValue1->displayText()};
}

void MatchUnitDialog::restoreMatching(const FieldTexts &texts)
{
    const auto restore = [this](QLineEdit *field, QString text) {
        int cursor = 0;
        if (m_validator->validate(text, cursor) == QValidator::Acceptable)
            showValue(field, text);
    };
    restore(m_form.lineEditValue0, texts.value0);
    restore(m_form.lineEditValue1, texts.value1);
}

void MatchUnitDialog::warn(const QString &text)
{
    showBox(QMessageBox::Warning, this, tr("Value Invalid"), text);
}

void MatchUnitDialog::store(const QString &value0, const QString &value1)
{
    if (!m_readOnlyMode) {
        m_unit->trigger = m_port;
        m_unit->match_type = m_type;
        m_unit->counter_enable = m_form.groupBoxCounter->isChecked();
        m_unit->counter_width = m_form.spinBoxCounterWidth->value();
    }
    m_unit->func = m_func;
    m_unit->counter = m_form.spinBoxCounter->value();
    m_unit->countinuous = m_form.checkBoxContinuous->isChecked();
    m_unit->value0 = value0;
    m_unit->value1 = value1;
}

std::array<QLineEdit *, 2> MatchUnitDialog::fields() const
{
    return {m_form.lineEditValue0, m_form.lineEditValue1};
}

int MatchUnitDialog::shownFields() const
{
    return isRangeFunction(m_func) ? 2 : 1;
}

void MatchUnitDialog::paste(int field, const QString &text)
{
    auto *edit = static_cast<ValueField *>(fields()[field]);
    const ValueRules rules{m_base, portWidth(), m_func, m_type};
    const bool isWhole = edit->takesWhole() || hasRadixPrefix(text, m_base);
    const int start = edit->hasSelectedText() ? edit->selectionStart() : edit->cursorPosition();
    const PastedValue pasted = isWhole
                                   ? pastedWhole(text, rules)
                                   : pastedDigits(text, edit->displayText().size() - start, rules);
    ValueStory &story = m_stories[field];
    if (pasted.digits && isWhole) {
        showValue(edit, *pasted.digits);
    } else if (pasted.digits) {
        edit->deselect();
        edit->setCursorPosition(start);
        edit->insert(*pasted.digits);
    }
    if (pasted.digits)
        story.replaced(pasted.told);
    else
        story.tell(pasted.told);
    updateReadout();
}

void MatchUnitDialog::updateReadout()
{
    if (!m_port) {
        m_form.readout->showValues({});
        m_form.readout->showSignal({});
        m_form.readout->showFaults({});
        return;
    }
    const FieldTexts texts = fieldTexts();
    const BinaryValues values =
        binaryValues(texts.value0, texts.value1, m_base, portWidth(), m_func);
    QStringList stored{values.value0, values.value1};
    stored.resize(shownFields());
    m_form.readout->showValues(stored);
    m_form.readout->showSignal(signalAtCursor());

    QStringList faults = m_stories[0].faults(texts.value0, values.value0, m_base, portWidth());
    if (shownFields() == 2)
        faults += m_stories[1].faults(texts.value1, values.value1, m_base, portWidth());
    if (values.problem == ValueProblem::TooWide)
        faults += tr("More than the port's %n bit(s): OK will refuse it.", nullptr, portWidth());
    if (values.problem == ValueProblem::MaximumBelowMinimum)
        faults += tr("The maximum is less than the minimum: OK will refuse it.");
    if (const QString fault = counterFault(); !fault.isEmpty())
        faults += fault;
    faults.removeDuplicates();
    m_form.readout->showFaults(faults);
    for (const int field : {0, 1})
        m_stories[field].settle(fields()[field]->displayText());
}

QString MatchUnitDialog::counterFault() const
{
    // The register has 16 bits and counts from zero.
    const auto counted = [](qint64 count) { return int((count - 1) & 0xffff) + 1; };
    const int count = m_form.spinBoxCounter->value();
    if (!m_unit->counter_enable)
        return {};
    if (m_unit->counter != count && counted(m_unit->counter) != m_unit->counter)
        return tr("The description's count of %1 counts %2 in the core; OK stores %3.")
            .arg(QString::number(m_unit->counter), QString::number(counted(m_unit->counter)),
                 QString::number(count));
    if (counted(count) != count)
        return tr("A count of %1 counts %2 in the core.")
            .arg(QString::number(count), QString::number(counted(count)));
    return {};
}

QString MatchUnitDialog::signalAtCursor() const
{
    const QLineEdit *edit = fields()[shownFields() == 2 ? m_cursorField : 0];
    const int digits = int(edit->displayText().size());
    const int digit = edit->cursorPosition();
    if (!m_port || digit >= digits)
        return {};
    if (m_base == 10)
        return tr("no single signal in DEC");
    const int bitsPerDigit = m_base == 16 ? 4 : m_base == 8 ? 3 : 1;
    const int end = portWidth() - bitsPerDigit * (digits - 1 - digit);
    const int begin = std::max(0, end - bitsPerDigit);
    const auto nameAt = [this](int position) {
        const SignalEntry entry = signalAtPosition(m_port->signals, position);
        return entry.text.isEmpty() ? entry.name : entry.text;
    };
    return end - begin == 1 ? nameAt(begin) : tr("%1 to %2").arg(nameAt(begin), nameAt(end - 1));
}

} // namespace KEO
