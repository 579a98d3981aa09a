// The part of MatchUnitDialog that makes its widgets and puts them in order.

#include "matchunitdialog.h"

#include <config/matchtext.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTreeWidget>

namespace KEO {

namespace {

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

} // namespace

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
    m_spinBoxCounter = makeSpinBox("spinBoxCounter", 1 << kMaxCounterWidth);
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

} // namespace KEO
