#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;

namespace WaveMonitor {

/// The bar at the lower edge of a viewer that asks what to look for and tells what was found. It
/// does not know what there is to find. Enter and F3 ask for the next hit, with Shift for the
/// previous one, Escape closes the bar.
class FindBar final : public QWidget
{
    Q_OBJECT

public:
    /// What the text is. Anything leaves it to the one who searches.
    enum Kind { Anything, Name, Value, Edge };
    enum class Outcome { Found, Failed };

    explicit FindBar(QWidget *parent = nullptr);

    [[nodiscard]] Kind kind() const;
    [[nodiscard]] QString text() const; ///< without blanks at its ends
    /// Shows the bar and takes the focus, which closing gives back to who had it.
    void open();
    void close();
    /// One line about what was found, or why nothing was.
    void tell(const QString &text, Outcome outcome);

Q_SIGNALS:
    void changed();
    void next();
    void previous();
    void closed();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QComboBox *m_kind;
    QLineEdit *m_text;
    QLabel *m_outcome;
    QPointer<QWidget> m_focusBefore;
};

} // namespace WaveMonitor
