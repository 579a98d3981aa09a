#include "valuereadout.h"

#include <trigger/valuetext.h>
#include <widgets/elidedlabel.h>
#include <widgets/formwidgets.h>

#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>

namespace KEO {

namespace {

constexpr int kFaultLines = 2; // whose room is kept, so that the dialog keeps still; more scroll

ElidedLabel *makeText(const QString &name)
{
    auto *label = new ElidedLabel;
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    // A port may have thousands of bits; the tool tip shows them all.
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    return label;
}

/// Red that can be read on the window's ground, be it light or dark.
QColor faultColor(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() > 127 ? QColor(176, 0, 0)
                                                             : QColor(255, 128, 128);
}

} // namespace

ValueReadout::ValueReadout(QWidget *parent)
    : QWidget(parent),
      m_signal(makeText(QStringLiteral("lbSignal"))),
      m_faults(new QPlainTextEdit),
      m_grid(new QGridLayout(this))
{
    m_faults->setObjectName(QStringLiteral("lbFaults"));
    m_faults->setAccessibleName(tr("Faults of the values"));
    m_faults->setReadOnly(true);
    m_faults->setFrameShape(QFrame::NoFrame);
    m_faults->viewport()->setAutoFillBackground(false);
    m_faults->document()->setDocumentMargin(0);
    m_faults->setFixedHeight(kFaultLines * m_faults->fontMetrics().lineSpacing());
    QPalette colors = m_faults->palette();
    colors.setColor(QPalette::Text, faultColor(colors));
    m_faults->setPalette(colors);
    showFaults({});

    m_grid->setContentsMargins({});
    m_grid->setVerticalSpacing(2);
    const QStringList names = {tr("Binary:"), tr("Hexadecimal:"), tr("Decimal:")};
    for (int row = 0; row < kRows; ++row) {
        m_grid->addWidget(new QLabel(names[row]), row, 0);
        for (int value = 0; value < kValues; ++value) {
            m_texts[row][value] = makeText(QStringLiteral("lbStored%1%2").arg(row).arg(value));
            m_grid->addWidget(m_texts[row][value], row, 1 + value);
        }
    }
    m_grid->addWidget(new QLabel(tr("At the cursor:")), kRows, 0);
    m_grid->addWidget(m_signal, kRows, 1, 1, kValues);
    m_grid->addWidget(m_faults, kRows + 1, 0, 1, 1 + kValues);
}

void ValueReadout::showValues(const QStringList &binaries)
{
    for (int value = 0; value < kValues; ++value) {
        const bool isShown = value < binaries.size();
        const QString binary = binaries.value(value);
        const QString decimal = decimalText(binary);
        m_texts[0][value]->setText(binary);
        m_texts[1][value]->setText(digitText(binary, 4));
        m_texts[2][value]->setText(isShown && decimal.isEmpty() ? tr("no number") : decimal);
        for (int row = 0; row < kRows; ++row)
            m_texts[row][value]->setVisible(isShown || value == 0);
        m_grid->setColumnStretch(1 + value, isShown || value == 0 ? 1 : 0); // or half stays empty
    }
}

void ValueReadout::showSignal(const QString &name)
{
    m_signal->setText(name);
}

void ValueReadout::showFaults(const QStringList &faults)
{
    const QString text = faults.join(u'\n');
    m_faults->setFocusPolicy(text.isEmpty() ? Qt::NoFocus : Qt::StrongFocus); // to scroll by key
    m_faults->setTabChangesFocus(true);
    if (m_faults->toPlainText() != text)
        m_faults->setPlainText(text);
}

} // namespace KEO
