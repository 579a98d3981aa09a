#pragma once

#include <QCoreApplication>

class QCheckBox;
class QComboBox;
class QDialog;
class QGroupBox;
class QLabel;
class QRadioButton;
class QSpinBox;
class QTreeWidget;
class QWidget;

namespace KEO {

class ValueField;
class ValueReadout;

/// The widgets of MatchUnitDialog, laid out and in tab order, empty. The members are their object
/// names.
struct MatchUnitForm
{
    Q_DECLARE_TR_FUNCTIONS(KEO::MatchUnitDialog)

public:
    /// Fills \a dialog, which owns the widgets. Its buttons accept and reject it.
    explicit MatchUnitForm(QDialog &dialog);

    QLabel *lbTitle = nullptr;
    QComboBox *comboBoxTrigger = nullptr;
    QTreeWidget *treeSignals = nullptr;
    QWidget *widgetRight = nullptr; ///< all that needs a port
    QComboBox *comboBoxType = nullptr;
    QComboBox *comboBoxFunc = nullptr;
    QRadioButton *rbtnBin = nullptr;
    QRadioButton *rbtnOct = nullptr;
    QRadioButton *rbtnDec = nullptr;
    QRadioButton *rbtnHex = nullptr;
    QLabel *lbValue0 = nullptr;
    ValueField *lineEditValue0 = nullptr;
    QLabel *lbValue1 = nullptr;
    ValueField *lineEditValue1 = nullptr;
    QGroupBox *groupBoxCounter = nullptr;
    QSpinBox *spinBoxCounterWidth = nullptr;
    QSpinBox *spinBoxCounter = nullptr;
    QCheckBox *checkBoxContinuous = nullptr;
    ValueReadout *readout = nullptr;

private:
    [[nodiscard]] QWidget *makeTriggerSide();
    [[nodiscard]] QWidget *makeSettingsSide();
    [[nodiscard]] QGroupBox *makeValueGroup();
    [[nodiscard]] QGroupBox *makeCounterGroup();
    [[nodiscard]] QGroupBox *makeReadoutGroup();
    void orderTabs() const;
};

} // namespace KEO
