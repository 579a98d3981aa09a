#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

#include <array>

class QGridLayout;
class QLineEdit;
class QPushButton;

namespace KEO {

/// A keypad on which the user enters a trigger expression token by token. It begins empty, and
/// closes as accepted only with a valid expression. The tokens can be typed as well: the operators,
/// and a unit's name with or without its M.
class MuExpressionDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit MuExpressionDialog(QWidget *parent = nullptr);

    /// Flag i tells whether unit i can be entered; 16 at most.
    void setUnitButtons(const QList<bool> &flags);
    /// The tokens entered make an expression, see KEO::isExpressionValid.
    [[nodiscard]] bool isExpressionValid() const;

    /// Runs the dialog modally. The expression entered, or nothing if the dialog was cancelled.
    [[nodiscard]] static QString editExpressionText(const QList<bool> &flags,
                                                    QWidget *parent = nullptr);

public Q_SLOTS:
    void accept() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private Q_SLOTS:
    void expBtnClicked(QString exp);
    void backspaceClicked();
    void clearAllClicked();

private:
    static constexpr int kUnits = 16;

    [[nodiscard]] QGridLayout *makePad();
    QPushButton *addTokenButton(const QString &objectName, const QString &token);
    QPushButton *addEditButton(const QString &objectName, const QString &text, const QString &tip);
    void typeDigit(int digit);
    void showTokens();

    QStringList m_tokens;
    bool m_unitOneTyped = false; // a "1" was typed last, maybe the first digit of M10 to M15
    QLineEdit *m_editDisplay;    // owned by the object tree
    std::array<QPushButton *, kUnits> m_unitButtons{}; // owned by the object tree
};

} // namespace KEO
