#include "matchunitdialog.h"

#include "matchvalue.h"

#include <config/coreconfig.h>
#include <config/matchtext.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
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

constexpr int kMatchTypes = 6;
constexpr int kMaxCounterWidth = 16;
constexpr int kTreeWidth = 160; // pixels, at least

template <typename Widget>
Widget *named(Widget *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

QLabel *labelFor(QWidget *buddy, const QString &text)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

QLineEdit *makeValueField(const char *name, const QString &accessibleName)
{
    QFont font(QStringLiteral("Courier New"));
    font.setStyleHint(QFont::TypeWriter); // where there is no Courier New
    auto *field = named(new QLineEdit, name);
    field->setFont(font);
    field->setAccessibleName(accessibleName);
    return field;
}

QSpinBox *makeSpinBox(const char *name, int maximum)
{
    auto *box = named(new QSpinBox, name);
    box->setRange(1, maximum);
    box->setValue(2);
    return box;
}

QTreeWidgetItem *itemOf(const SignalEntry &entry)
{
    auto *item = new QTreeWidgetItem({entry.text.isEmpty() ? entry.name : entry.text});
    item->setToolTip(0, item->text(0));
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
      m_validator(new QRegularExpressionValidator(this))
{
    setWindowTitle(tr("Match Unit Config"));
    buildWidgets();
    orderTabs();
    showUnit();
    showCounter();
    connectSlots();
    if (m_readOnlyMode)
        freezeStructure();
}

void MatchUnitDialog::buildWidgets()
{
    m_lbTitle = named(new QLabel, "lbTitle");
    QFont titleFont = m_lbTitle->font();
    titleFont.setPointSize(12);
    titleFont.setWeight(QFont::Bold);
    m_lbTitle->setFont(titleFont);

    auto *sides = new QHBoxLayout;
    sides->addWidget(makeTriggerSide(), 1);
    sides->addWidget(makeSettingsSide(), 2);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &MatchUnitDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &MatchUnitDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_lbTitle);
    layout->addLayout(sides, 1);
    layout->addWidget(buttons);
}

QWidget *MatchUnitDialog::makeTriggerSide()
{
    m_comboBoxTrigger = named(new QComboBox, "comboBoxTrigger");
    m_treeSignals = named(new QTreeWidget, "treeSignals");
    m_treeSignals->setColumnCount(1);
    m_treeSignals->setMinimumWidth(kTreeWidth);
    m_treeSignals->setHeaderHidden(true);
    m_treeSignals->setUniformRowHeights(true);
    m_treeSignals->setAccessibleName(tr("Signals of the trigger port"));

    auto *side = new QWidget;
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins({});
    layout->addWidget(labelFor(m_comboBoxTrigger, tr("On Trigger Port:")));
    layout->addWidget(m_comboBoxTrigger);
    layout->addWidget(m_treeSignals, 1);
    return side;
}

QWidget *MatchUnitDialog::makeSettingsSide()
{
    m_comboBoxType = named(new QComboBox, "comboBoxType");
    m_comboBoxFunc = named(new QComboBox, "comboBoxFunc");
    // The functions change with the type; the widest of all is known beforehand.
    m_comboBoxFunc->setMinimumContentsLength(int(matchFunctionText(7).size()));
    auto *combos = new QFormLayout;
    combos->addRow(labelFor(m_comboBoxType, tr("Match Type:")), m_comboBoxType);
    combos->addRow(labelFor(m_comboBoxFunc, tr("Function:")), m_comboBoxFunc);

    m_widgetRight = named(new QWidget, "widgetRight");
    auto *layout = new QVBoxLayout(m_widgetRight);
    layout->setContentsMargins({});
    layout->addLayout(combos);
    layout->addWidget(makeValueGroup());
    layout->addWidget(makeCounterGroup());
    layout->addStretch();
    return m_widgetRight;
}

QGroupBox *MatchUnitDialog::makeValueGroup()
{
    m_rbtnBin = named(new QRadioButton(tr("BIN")), "rbtnBin");
    m_rbtnOct = named(new QRadioButton(tr("OCT")), "rbtnOct");
    m_rbtnDec = named(new QRadioButton(tr("DEC")), "rbtnDec");
    m_rbtnHex = named(new QRadioButton(tr("HEX")), "rbtnHex");
    auto *radixes = new QHBoxLayout;
    for (QRadioButton *button : {m_rbtnBin, m_rbtnOct, m_rbtnDec, m_rbtnHex})
        radixes->addWidget(button);
    radixes->addStretch();

    m_lineEditValue0 = makeValueField("lineEditValue0", tr("Value, or minimum of a range"));
    m_lineEditValue1 = makeValueField("lineEditValue1", tr("Maximum of a range"));
    m_lbValue0 = named(labelFor(m_lineEditValue0, tr("Minimum:")), "lbValue0");
    m_lbValue1 = named(labelFor(m_lineEditValue1, tr("Maximum:")), "lbValue1");
    for (QWidget *widget : {static_cast<QWidget *>(m_lbValue0), static_cast<QWidget *>(m_lbValue1),
                            static_cast<QWidget *>(m_lineEditValue1)}) {
        // Their room stays when they hide, so that the dialog keeps still when the function
        // changes.
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        widget->setSizePolicy(policy);
    }

    auto *fields = new QGridLayout;
    fields->addWidget(m_lbValue0, 0, 0);
    fields->addWidget(m_lineEditValue0, 0, 1);
    fields->addWidget(m_lbValue1, 1, 0);
    fields->addWidget(m_lineEditValue1, 1, 1);
    auto *group = new QGroupBox(tr("Value"));
    auto *layout = new QVBoxLayout(group);
    layout->addLayout(radixes);
    layout->addLayout(fields);
    return group;
}

QGroupBox *MatchUnitDialog::makeCounterGroup()
{
    m_spinBoxCounterWidth = makeSpinBox("spinBoxCounterWidth", kMaxCounterWidth);
    m_spinBoxCounter = makeSpinBox("spinBoxCounter", countsOf(kMaxCounterWidth));
    m_checkBoxContinuous = named(new QCheckBox(tr("Continuous")), "checkBoxContinuous");
    m_groupBoxCounter = named(new QGroupBox(tr("Counter")), "groupBoxCounter");
    m_groupBoxCounter->setCheckable(true);
    m_groupBoxCounter->setChecked(false);

    auto *layout = new QHBoxLayout(m_groupBoxCounter);
    layout->addWidget(labelFor(m_spinBoxCounterWidth, tr("Width:")));
    layout->addWidget(m_spinBoxCounterWidth);
    layout->addWidget(labelFor(m_spinBoxCounter, tr("Count:")));
    layout->addWidget(m_spinBoxCounter);
    layout->addWidget(m_checkBoxContinuous);
    layout->addStretch();
    return m_groupBoxCounter;
}

void MatchUnitDialog::orderTabs()
{
    const QList<QWidget *> order = {m_comboBoxTrigger, m_treeSignals,       m_comboBoxType,
                                    m_comboBoxFunc,    m_rbtnBin,           m_rbtnOct,
                                    m_rbtnDec,         m_rbtnHex,           m_lineEditValue0,
                                    m_lineEditValue1,  m_groupBoxCounter,   m_spinBoxCounterWidth,
                                    m_spinBoxCounter,  m_checkBoxContinuous};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void MatchUnitDialog::showUnit()
{
    m_lbTitle->setText(tr("Match Unit %1").arg(m_unit->index));
    for (int type = 0; type < kMatchTypes; ++type)
        m_comboBoxType->addItem(matchTypeText(type), type);
    for (const TriggerPort *port : m_core->portsWithSignals())
        m_comboBoxTrigger->addItem(tr("Trigger Port %1").arg(port->index), port->index);
    m_rbtnBin->setChecked(true);

    if (m_unit->trigger && !m_unit->trigger->signals.isEmpty())
        m_port = m_unit->trigger;
    m_comboBoxTrigger->setCurrentIndex(m_port ? m_comboBoxTrigger->findData(m_port->index) : -1);
    m_widgetRight->setEnabled(m_port);
    fillSignals();

    m_type = m_unit->match_type;
    m_func = m_unit->func;
    m_comboBoxType->setCurrentIndex(m_comboBoxType->findData(m_type));
    fillFunctions();
    m_comboBoxFunc->setCurrentIndex(m_comboBoxFunc->findData(m_func));
    showSecondValue();

    applyRadixAndFunction();
    if (m_port) {
        // A shorter value from a file means its number: that is how the core gets it.
        showValue(m_lineEditValue0, m_unit->value0.rightJustified(portWidth(), u'0'));
        showValue(m_lineEditValue1, m_unit->value1.rightJustified(portWidth(), u'0'));
    }
    toolTipValueChanged(calculatedBitwidth());
}

void MatchUnitDialog::showCounter()
{
    m_groupBoxCounter->setChecked(m_unit->counter_enable);
    m_spinBoxCounterWidth->setValue(m_unit->counter_width);
    m_spinBoxCounter->setMaximum(countsOf(m_unit->counter_width));
    m_spinBoxCounter->setValue(m_unit->counter);
    m_checkBoxContinuous->setChecked(m_unit->countinuous);
}

void MatchUnitDialog::freezeStructure()
{
    m_comboBoxTrigger->setEnabled(false);
    m_comboBoxType->setEnabled(false);
    m_groupBoxCounter->setCheckable(false);
    m_groupBoxCounter->setEnabled(m_unit->counter_enable);
    m_spinBoxCounterWidth->setEnabled(false);
    m_lineEditValue0->setFocus(); // what is left to change is above all the value
}

void MatchUnitDialog::connectSlots()
{
    connect(m_comboBoxTrigger, &QComboBox::currentIndexChanged, this,
            &MatchUnitDialog::onTriggerChanged);
    connect(m_comboBoxType, &QComboBox::currentIndexChanged, this, &MatchUnitDialog::onTypeChanged);
    connect(m_comboBoxFunc, &QComboBox::currentIndexChanged, this, &MatchUnitDialog::onFuncChanged);
    for (QRadioButton *button : {m_rbtnBin, m_rbtnOct, m_rbtnDec, m_rbtnHex})
        connect(button, &QRadioButton::toggled, this, &MatchUnitDialog::onBaseChanged);
    connect(m_spinBoxCounterWidth, &QSpinBox::valueChanged, this,
            &MatchUnitDialog::onCounterWidthChanged);
}

void MatchUnitDialog::onTriggerChanged()
{
    const bool selected = m_comboBoxTrigger->currentIndex() >= 0;
    m_port = selected ? m_core->triggerByIndex(m_comboBoxTrigger->currentData().toInt()) : nullptr;
    m_widgetRight->setEnabled(m_port);
    fillSignals();

    const FieldTexts saved = fieldTexts();
    applyRadixAndFunction();
    const int digits = calculatedBitwidth();
    showValue(m_lineEditValue0, fitDigits(saved.value0, digits));
    showValue(m_lineEditValue1, fitDigits(saved.value1, digits));
    toolTipValueChanged(digits);
}

void MatchUnitDialog::onTypeChanged()
{
    m_type = m_comboBoxType->currentData().toInt();
    {
        const QSignalBlocker blocker(m_comboBoxFunc);
        fillFunctions();
        m_comboBoxFunc->setCurrentIndex(std::max(m_comboBoxFunc->findData(m_func), 0));
    }
    onFuncChanged();
}

void MatchUnitDialog::onFuncChanged()
{
    m_func = m_comboBoxFunc->currentData().toInt();
    showSecondValue();
    const FieldTexts saved = fieldTexts();
    applyRadixAndFunction();
    restoreMatching(saved);
}

void MatchUnitDialog::onBaseChanged()
{
    const int oldBase = m_base;
    if (m_rbtnBin->isChecked())
        m_base = 2;
    else if (m_rbtnHex->isChecked())
        m_base = 16;
    else if (m_rbtnOct->isChecked())
        m_base = 8;
    else if (m_rbtnDec->isChecked())
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
}

void MatchUnitDialog::onCounterWidthChanged()
{
    m_spinBoxCounter->setMaximum(countsOf(m_spinBoxCounterWidth->value()));
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
    m_lineEditValue0->setToolTip(range);
    m_lineEditValue1->setToolTip(range);
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
    m_treeSignals->clear();
    if (!m_port)
        return;
    QList<QTreeWidgetItem *> items;
    for (const SignalEntry &entry : m_port->signals)
        items.append(itemOf(entry));
    m_treeSignals->addTopLevelItems(items);
    widenFields();
}

void MatchUnitDialog::fillFunctions()
{
    m_comboBoxFunc->clear();
    for (int func : functionsForMatchType(m_type))
        m_comboBoxFunc->addItem(matchFunctionText(func), func);
}

void MatchUnitDialog::showSecondValue()
{
    const bool range = isRangeFunction(m_func);
    m_lbValue0->setVisible(range);
    m_lbValue1->setVisible(range);
    m_lineEditValue1->setVisible(range);
}

void MatchUnitDialog::applyRadixAndFunction()
{
    if (!m_port)
        return;
    const QString mask = valueMask(calculatedBitwidth());
    m_validator->setRegularExpression(QRegularExpression(
        valuePattern(m_base, m_func, m_type), QRegularExpression::CaseInsensitiveOption));
    for (QLineEdit *field : {m_lineEditValue0, m_lineEditValue1}) {
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
    for (QLineEdit *field : {m_lineEditValue0, m_lineEditValue1})
        field->setMinimumWidth(std::min(widthForDigits(field, portWidth()), limit));
}

MatchUnitDialog::FieldTexts MatchUnitDialog::fieldTexts() const
{
    // Not text(): that drops every "0", the mask's filler.
    return {m_lineEditValue0->displayText(), m_lineEditValue1->displayText()};
}

void MatchUnitDialog::restoreMatching(const FieldTexts &texts)
{
    const auto restore = [this](QLineEdit *field, QString text) {
        int cursor = 0;
        if (m_validator->validate(text, cursor) == QValidator::Acceptable)
            showValue(field, text);
    };
    restore(m_lineEditValue0, texts.value0);
    restore(m_lineEditValue1, texts.value1);
}

void MatchUnitDialog::warn(const QString &text)
{
    QMessageBox::warning(this, tr("Value Invalid"), text);
}

void MatchUnitDialog::store(const QString &value0, const QString &value1)
{
    if (!m_readOnlyMode) {
        m_unit->trigger = m_port;
        m_unit->match_type = m_type;
        m_unit->counter_enable = m_groupBoxCounter->isChecked();
        m_unit->counter_width = m_spinBoxCounterWidth->value();
    }
    m_unit->func = m_func;
    m_unit->counter = m_spinBoxCounter->value();
    m_unit->countinuous = m_checkBoxContinuous->isChecked();
    m_unit->value0 = value0;
    m_unit->value1 = value1;
}

} // namespace KEO
