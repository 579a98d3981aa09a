#pragma once

#include <trigger/expression.h>

#include <QDialog>
#include <QList>

#include <array>

class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace KEO {

/// A keypad on which the user enters a trigger expression token by token. It begins empty, and
/// closes as accepted only with a valid expression. It can be typed and pasted as well, with
/// blanks, a unit's name with or without its M. What is typed always shows; a line below tells why
/// it can't stand.
class MuExpressionDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit MuExpressionDialog(QWidget *parent = nullptr);

    /// Flag i tells whether unit i can be entered; 16 at most.
    void setUnitButtons(const QList<bool> &flags);
    /// The tokens entered make an expression, see KEO::isExpressionValid, of units that can be
    /// entered.
    [[nodiscard]] bool isExpressionValid() const;

    /// Runs the dialog modally. The expression entered, or nothing if the dialog was cancelled.
    [[nodiscard]] static QString editExpressionText(const QList<bool> &flags,
                                                    QWidget *parent = nullptr);

public Q_SLOTS:
    void accept() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    /// Looks at the keys of the display.
    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void expBtnClicked(const QString &exp);
    void backspaceClicked();
    void clearAllClicked();

private:
    static constexpr int kUnits = 16;

    [[nodiscard]] QGridLayout *makePad();
    QPushButton *addTokenButton(const QString &objectName, const QString &token);
    QPushButton *addEditButton(const QString &objectName, const QString &text, const QString &tip);
    [[nodiscard]] bool takeKey(const QKeyEvent &event);
    void addClipboardActions();
    void copy() const;
    void paste();
    /// Tells a name that can't stand at once, and what else is wrong when OK has refused it: while
    /// it is entered an expression is always wrong.
    enum class Tell { Names, All };
    void showTokens(Tell tell = Tell::Names);

    ExpressionInput m_input;
    QList<bool> m_flags;
    QLineEdit *m_editDisplay;                          // owned by the object tree
    QLabel *m_reason;                                  // owned by the object tree
    std::array<QPushButton *, kUnits> m_unitButtons{}; // owned by the object tree
};

} // namespace KEO
