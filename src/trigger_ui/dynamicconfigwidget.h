#pragma once

#include <capture/triggerproposal.h>

#include <QList>
#include <QTimer>
#include <QWidget>

#include <functional>

class QComboBox;
class QGroupBox;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QSpinBox;

namespace KEO {

struct CoreConfig;
class MatchUnitModel;
class TriggerCheckStrip;
class UnitTable;
struct TriggerFinding;

/// The page on which the user sets the capture of one standard core: windows, amount, trigger
/// position, trigger expressions and match units.
///
/// What stands in its fields reaches the core with saveToCore only; the two dialogs that it opens
/// write an expression or a match unit into the core when they are accepted. A strip at the bottom
/// tells what is odd about the trigger as it stands, the fields included. The page is disabled
/// until its owner enables it.
class DynamicConfigWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit DynamicConfigWidget(QWidget *parent = nullptr);

    /// The core that the page shows, or null.
    [[nodiscard]] CoreConfig *core() const { return m_core; }
    /// Shows \a core, which is borrowed: call setCore(nullptr), or with another core, before it is
    /// deleted or at once thereafter; the old core is not touched any more. A dialog that the page
    /// has open is closed as cancelled. Fills an empty `expressionEnabled` of the core. Never emits
    /// windowNumChanged.
    void setCore(CoreConfig *core);
    /// Writes windows, amount (samples, 0 when none is selected), trigger position (samples) and
    /// the flag of each expression into the core. Does nothing without a core.
    void saveToCore();
    /// Calls \a use while the core has what saveToCore would write, and then puts back what it had.
    void withFields(const std::function<void()> &use);
    /// Sets units and an expression of the core shown, as the dialogs and the list do. Gives the
    /// changes that take it back.
    TriggerChanges setTrigger(const TriggerChanges &changes);
    /// Where the user is in the table and in the list.
    struct Rows
    {
        int unit = -1;                 ///< index of the current one; -1 for none
        QList<int> selectedUnits = {}; ///< indexes
        int expression = -1;           ///< row of the current one; -1 for none
    };
    [[nodiscard]] Rows rows() const;
    /// Goes there, as far as the core shown has it.
    void setRows(const Rows &rows);
    /// Selects what \a finding speaks of.
    void lead(const TriggerFinding &finding);
    /// Shows no core.
    void clearPage();

Q_SIGNALS:
    /// The user chose a number of windows. The core has it after the next saveToCore.
    void windowNumChanged();
    /// The user has changed something of the trigger or the capture, in a field or a dialog: once
    /// for all changes of a turn of the event loop.
    void edited();

private Q_SLOTS:
    void editMu();
    void onWindowNumChanged();
    void onCaptureAmountChanged();
    void editExpression(QListWidgetItem *item);

private:
    [[nodiscard]] QGroupBox *makeCaptureGroup();
    [[nodiscard]] QGroupBox *makeExpressionGroup();
    [[nodiscard]] QGroupBox *makeUnitGroup();
    void connectSlots();
    void addClipboardActions();
    void pasteIntoUnits();
    void pasteIntoExpression();
    /// Puts \a expression, in tokens, into the core's list and the page's.
    void setExpression(int row, const QString &expression);
    void refuse(const TriggerFinding &finding);
    void bringIntoSight(QWidget *place);
    [[nodiscard]] bool hasOpenDialog() const;
    void closeOpenDialogs();
    void fillWindowNumbers();
    void fillAmounts();
    void fillExpressions();
    void limitTriggerPosition(int amount);

    /// What saveToCore writes.
    struct Settings
    {
        int windows = 0;
        int amount = 0;
        int position = 0;
        QList<bool> expressions;
    };
    [[nodiscard]] static Settings settingsOf(const CoreConfig &core);
    static void put(const Settings &settings, CoreConfig &core);
    [[nodiscard]] Settings settingsOfFields() const;
    void fieldsEdited();
    void scheduleCheck();
    void checkSettings();

    CoreConfig *m_core = nullptr; // borrowed
    MatchUnitModel *m_model;      // owned by the object tree, as are the widgets
    QGroupBox *m_groupBox = nullptr;
    QLineEdit *m_lineEditStorage = nullptr;
    QComboBox *m_comboBoxWindow = nullptr;
    QComboBox *m_comboBoxAmount = nullptr;
    QSpinBox *m_spinBoxTrPos = nullptr;
    QListWidget *m_listExpressions = nullptr;
    UnitTable *m_tableUnit = nullptr;
    TriggerCheckStrip *m_strip = nullptr;
    QTimer m_checkTimer; // one check for all edits of a turn of the event loop
    /// What the fields hold counts. Until the user has touched one, the description does: the
    /// fields offer only what is possible.
    bool m_fieldsCount = false;
};

} // namespace KEO
