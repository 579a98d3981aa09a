#pragma once

#include "matchunitform.h"
#include "valuestory.h"

#include <config/matchtype.h>

#include <QDialog>
#include <QString>

#include <array>

class QLineEdit;
class QRegularExpressionValidator;

namespace KEO {

struct CoreConfig;
struct MatchUnit;
struct TriggerPort;

/// Edits one match unit: port, match type, function, one or two values in a radix of the user's
/// choice, and the counter. The unit is written when the dialog is accepted, and not before; wrong
/// values are reported in a box, and the dialog stays open with them. What OK would store stands
/// below at any time, and in red what the rules make of a value that was not said so.
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
    [[nodiscard]] std::array<QLineEdit *, 2> fields() const;
    [[nodiscard]] int shownFields() const;
    void paste(int field, const QString &text);
    void updateReadout();
    [[nodiscard]] QString counterFault() const;
    /// The signals whose levels the digit at the text cursor holds.
    [[nodiscard]] QString signalAtCursor() const;
    [[nodiscard]] FieldTexts fieldTexts() const;
    void restoreMatching(const FieldTexts &texts);
    void warn(const QString &text);
    void store(const QString &value0, const QString &value1);

    MatchUnit *m_unit;  // borrowed
    CoreConfig *m_core; // borrowed
    bool m_readOnlyMode = false;
    QRegularExpressionValidator *m_validator; // of both value fields; owned by the object tree
    TriggerPort *m_port = nullptr;            // borrowed from the core; null: none selected
    MatchType m_type = MatchType::Basic;
    MatchFunction m_func = MatchFunction::Equal;
    int m_base = 2;
    std::array<ValueStory, 2> m_stories;
    int m_cursorField = 0; // where the text cursor is, or was last
    MatchUnitForm m_form;
};

} // namespace KEO
