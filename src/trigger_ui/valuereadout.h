#pragma once

#include <QStringList>
#include <QWidget>

#include <array>

class QGridLayout;
class QPlainTextEdit;

namespace KEO {

class ElidedLabel;

/// Says in binary, hexadecimal and decimal what one or two values are, and which signal the text
/// cursor stands at. Faults stand below in red, as sentences.
class ValueReadout final : public QWidget
{
    Q_OBJECT

public:
    explicit ValueReadout(QWidget *parent = nullptr);

    /// Binary texts: none, one, or minimum and maximum.
    void showValues(const QStringList &binaries);
    void showSignal(const QString &name);
    void showFaults(const QStringList &faults);

private:
    static constexpr int kRows = 3; // one a radix
    static constexpr int kValues = 2;

    std::array<std::array<ElidedLabel *, kValues>, kRows> m_texts{}; // owned by the object tree,
    ElidedLabel *m_signal;                                           // as are these
    QPlainTextEdit *m_faults;
    QGridLayout *m_grid;
};

} // namespace KEO
