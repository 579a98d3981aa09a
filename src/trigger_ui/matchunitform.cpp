#include "matchunitform.h"

#include "valuefield.h"
#include "valuereadout.h"

#include <config/matchtype.h>
#include <widgets/formwidgets.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QShortcut>
#include <QSpinBox>
#include <QTreeWidget>

#include <utility>

namespace KEO {

namespace {

constexpr int kMaxCounterWidth = 16;
constexpr int kTreeWidth = 160; // pixels, at least

ValueField *makeValueField(const char *name, const QString &accessibleName)
{
    QFont font(QStringLiteral("Courier New"));
    font.setStyleHint(QFont::TypeWriter); // where there is no Courier New
    auto *field = named(new ValueField, name);
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

MatchUnitForm::MatchUnitForm(QDialog &dialog)
{
    lbTitle = named(new QLabel, "lbTitle");
    QFont titleFont = lbTitle->font();
    titleFont.setPointSize(12);
    titleFont.setWeight(QFont::Bold);
    lbTitle->setFont(titleFont);

    auto *sides = new QHBoxLayout;
    sides->addWidget(makeTriggerSide(), 1);
    sides->addWidget(makeSettingsSide(), 2);

    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(lbTitle);
    layout->addLayout(sides, 1);
    layout->addWidget(makeReadoutGroup()); // as wide as it gets: a value may have many digits
    addOkAndCancel(dialog, *layout);
    orderTabs();
}

QWidget *MatchUnitForm::makeTriggerSide()
{
    comboBoxTrigger = named(new QComboBox, "comboBoxTrigger");
    treeSignals = named(new QTreeWidget, "treeSignals");
    treeSignals->setColumnCount(1);
    treeSignals->setMinimumWidth(kTreeWidth);
    treeSignals->setHeaderHidden(true);
    treeSignals->setUniformRowHeights(true);
    treeSignals->setAccessibleName(tr("Signals of the trigger port"));

    auto *side = new QWidget;
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins({});
    layout->addWidget(labelFor(comboBoxTrigger, tr("On Trigger Port:")));
    layout->addWidget(comboBoxTrigger);
    layout->addWidget(treeSignals, 1);
    return side;
}

QWidget *MatchUnitForm::makeSettingsSide()
{
    comboBoxType = named(new QComboBox, "comboBoxType");
    comboBoxFunc = named(new QComboBox, "comboBoxFunc");
    constexpr int kTypeStretch = 10;
    comboBoxType->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    // What it offers changes; so much of it shows at least, in letters as wide as "X".
    constexpr int kFunctionLetters = 7;
    comboBoxFunc->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    comboBoxFunc->setMinimumContentsLength(kFunctionLetters);
    // In one row: below them is much to show on a small screen.
    auto *combos = new QHBoxLayout;
    combos->addWidget(labelFor(comboBoxType, tr("Match Type:")));
    combos->addWidget(comboBoxType, kTypeStretch);
    combos->addWidget(labelFor(comboBoxFunc, tr("Function:")));
    combos->addWidget(comboBoxFunc, kFunctionLetters);

    widgetRight = named(new QWidget, "widgetRight");
    auto *layout = new QVBoxLayout(widgetRight);
    layout->setContentsMargins({});
    layout->addLayout(combos);
    layout->addWidget(makeValueGroup());
    layout->addWidget(makeCounterGroup());
    layout->addStretch();
    return widgetRight;
}

QGroupBox *MatchUnitForm::makeValueGroup()
{
    rbtnBin = named(new QRadioButton(tr("BIN")), "rbtnBin");
    rbtnOct = named(new QRadioButton(tr("OCT")), "rbtnOct");
    rbtnDec = named(new QRadioButton(tr("DEC")), "rbtnDec");
    rbtnHex = named(new QRadioButton(tr("HEX")), "rbtnHex");
    auto *radixes = new QHBoxLayout;
    for (const auto &[button, mnemonic] :
         {std::pair(rbtnBin, "&BIN"), std::pair(rbtnOct, "OC&T"), std::pair(rbtnDec, "&DEC"),
          std::pair(rbtnHex, "&HEX")}) {
        radixes->addWidget(button);
        // Leaves the cursor in the value, which a mnemonic in the button's text would not.
        const QKeySequence key = QKeySequence::mnemonic(QLatin1String(mnemonic));
        auto *shortcut = new QShortcut(key, button);
        QObject::connect(shortcut, &QShortcut::activated, button,
                         [radix = button] { radix->setChecked(true); });
        button->setToolTip(key.toString(QKeySequence::NativeText));
    }
    radixes->addStretch();

    lineEditValue0 = makeValueField("lineEditValue0", tr("Value, or minimum of a range"));
    lineEditValue1 = makeValueField("lineEditValue1", tr("Maximum of a range"));
    lbValue0 = named(labelFor(lineEditValue0, tr("Minimum:")), "lbValue0");
    lbValue1 = named(labelFor(lineEditValue1, tr("Maximum:")), "lbValue1");
    for (QWidget *widget : {static_cast<QWidget *>(lbValue0), static_cast<QWidget *>(lbValue1),
                            static_cast<QWidget *>(lineEditValue1)}) {
        // Their room stays when they hide, so that the dialog keeps still when the function
        // changes.
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        widget->setSizePolicy(policy);
    }

    auto *fields = new QGridLayout;
    fields->addWidget(lbValue0, 0, 0);
    fields->addWidget(lineEditValue0, 0, 1);
    fields->addWidget(lbValue1, 1, 0);
    fields->addWidget(lineEditValue1, 1, 1);
    auto *group = new QGroupBox(tr("Value"));
    auto *layout = new QVBoxLayout(group);
    layout->addLayout(radixes);
    layout->addLayout(fields);
    return group;
}

QGroupBox *MatchUnitForm::makeReadoutGroup()
{
    readout = named(new ValueReadout, "readout");
    auto *group = new QGroupBox(tr("OK stores"));
    auto *layout = new QVBoxLayout(group);
    const int margin = layout->contentsMargins().left() / 2;
    layout->setContentsMargins(margin, 0, margin, 0);
    layout->addWidget(readout);
    return group;
}

QGroupBox *MatchUnitForm::makeCounterGroup()
{
    spinBoxCounterWidth = makeSpinBox("spinBoxCounterWidth", kMaxCounterWidth);
    spinBoxCounter = makeSpinBox("spinBoxCounter", 1 << kMaxCounterWidth);
    checkBoxContinuous = named(new QCheckBox(tr("Continuous")), "checkBoxContinuous");
    groupBoxCounter = named(new QGroupBox(tr("Counter")), "groupBoxCounter");
    groupBoxCounter->setCheckable(true);
    groupBoxCounter->setChecked(false);

    auto *layout = new QHBoxLayout(groupBoxCounter);
    layout->addWidget(labelFor(spinBoxCounterWidth, tr("Width:")));
    layout->addWidget(spinBoxCounterWidth);
    layout->addWidget(labelFor(spinBoxCounter, tr("Count:")));
    layout->addWidget(spinBoxCounter);
    layout->addWidget(checkBoxContinuous);
    layout->addStretch();
    return groupBoxCounter;
}

void MatchUnitForm::orderTabs() const
{
    const QList<QWidget *> order = {comboBoxTrigger, treeSignals,       comboBoxType,
                                    comboBoxFunc,    rbtnBin,           rbtnOct,
                                    rbtnDec,         rbtnHex,           lineEditValue0,
                                    lineEditValue1,  groupBoxCounter,   spinBoxCounterWidth,
                                    spinBoxCounter,  checkBoxContinuous};
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

} // namespace KEO
