#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QRegularExpressionValidator;
class QSpinBox;
class QTreeWidget;

namespace KEO {

struct CoreConfig;
struct MatchUnit;
struct TriggerPort;

/// Edits one match unit: port, match type, function, one or two values in a radix of the user's
/// choice, and the counter. The unit is written when the dialog is accepted, and not before; wrong
/// values are reported in a box, and the dialog stays open with them.
///
/// Without a connected port there is nothing to edit but the port, and accepting changes nothing.
class MatchUnitDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \a unit and its core are borrowed and must outlive the dialog. With \a readOnlyMode what the
    /// design fixes can be seen but not changed: port, match type, and whether there is a counter
    /// and how wide.
    MatchUnitDialog(MatchUnit *unit, bool readOnlyMode, QWidget *parent = nullptr);

public Q_SLOTS:
    void accept() override;

private Q_SLOTS:
    void onTriggerChanged();
    void onTypeChanged();
    void onFuncChanged();
    /// Runs twice for a change of the radix: once for the button that goes off, with the new radix
    /// already checked, and once for the other.
    void onBaseChanged();
    void onCounterWidthChanged();
    /// Digits of a value in the current radix; 0 without a port.
    [[nodiscard]] int calculatedBitwidth() const;
    /// Tells in both fields' tool tips the values that \a rw digits can take.
    void toolTipValueChanged(int rw);

private:
    /// What stands in the two value fields, as many digits as their mask has.
    struct FieldTexts
    {
        QString value0;
        QString value1;
    };

    void buildWidgets();
    [[nodiscard]] QWidget *makeTriggerSide();
    [[nodiscard]] QWidget *makeSettingsSide();
    [[nodiscard]] QGroupBox *makeValueGroup();
    [[nodiscard]] QGroupBox *makeCounterGroup();
    void orderTabs();
    void showUnit();
    void showCounter();
    void freezeStructure();
    void connectSlots();

    [[nodiscard]] int portWidth() const; // bits
    void fillSignals();
    void fillFunctions();
    void showSecondValue();
    void applyRadixAndFunction();
    void widenFields();
    [[nodiscard]] FieldTexts fieldTexts() const;
    void restoreMatching(const FieldTexts &texts);
    void warn(const QString &text);
    void store(const QString &value0, const QString &value1);

    MatchUnit *m_unit;  // borrowed
    CoreConfig *m_core; // borrowed
    bool m_readOnlyMode = false;
    QRegularExpressionValidator *m_validator; // of both value fields; owned by the object tree
    TriggerPort *m_port = nullptr;            // borrowed from the core; null: none selected
    int m_type = 0;
    int m_func = 0;
    int m_base = 2;

    // Owned by the object tree.
    QLabel *m_lbTitle = nullptr;
    QComboBox *m_comboBoxTrigger = nullptr;
    QTreeWidget *m_treeSignals = nullptr;
    QWidget *m_widgetRight = nullptr;
    QComboBox *m_comboBoxType = nullptr;
    QComboBox *m_comboBoxFunc = nullptr;
    QRadioButton *m_rbtnBin = nullptr;
    QRadioButton *m_rbtnOct = nullptr;
    QRadioButton *m_rbtnDec = nullptr;
    QRadioButton *m_rbtnHex = nullptr;
    QLabel *m_lbValue0 = nullptr;
    QLineEdit *m_lineEditValue0 = nullptr;
    QLabel *m_lbValue1 = nullptr;
    QLineEdit *m_lineEditValue1 = nullptr;
    QGroupBox *m_groupBoxCounter = nullptr;
    QSpinBox *m_spinBoxCounterWidth = nullptr;
    QSpinBox *m_spinBoxCounter = nullptr;
    QCheckBox *m_checkBoxContinuous = nullptr;
};

} // namespace KEO
