#include "findbar.h"

#include <widgets/colormix.h>

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QToolButton>

namespace WaveMonitor {

namespace {

QToolButton *newButton(const QString &name, const QString &tip, const QString &objectName)
{
    auto *button = new QToolButton;
    button->setAutoRaise(true);
    button->setObjectName(objectName);
    button->setAccessibleName(name);
    button->setToolTip(tip);
    return button;
}

} // namespace

FindBar::FindBar(QWidget *parent)
    : QWidget(parent), m_kind(new QComboBox), m_text(new QLineEdit), m_outcome(new QLabel)
{
    setObjectName(QStringLiteral("findBar"));
    setSizePolicy(QSizePolicy::Ignored,
                  QSizePolicy::Fixed); // the window's width is not its business
    m_kind->setObjectName(QStringLiteral("findKind"));
    m_kind->addItems({tr("Anything"), tr("Name"), tr("Value"), tr("Edge")});
    m_kind->setAccessibleName(tr("What to find"));
    m_kind->setToolTip(tr("What the text is, where it could be more than one thing"));
    m_text->setObjectName(QStringLiteral("findText"));
    m_text->setAccessibleName(tr("Find"));
    m_text->setPlaceholderText(tr("Name, or of the selected row: 3F, 3X, > 3F, edge"));
    m_text->setToolTip(
        tr("A part of a row's name. In the selected row: a value as the row shows it, "
           "with X for any digit; a comparison with =, !=, <, <=, > or >=; edge, "
           "rising or falling"));
    m_text->setClearButtonEnabled(true);
    m_outcome->setObjectName(QStringLiteral("findOutcome"));
    m_outcome->setTextFormat(Qt::PlainText);
    // A long sentence must not widen the window.
    m_outcome->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    QToolButton *previousButton = newButton(
        tr("Previous"), tr("Previous hit (Shift+Enter, Shift+F3)"), QStringLiteral("findPrevious"));
    previousButton->setArrowType(Qt::LeftArrow);
    QToolButton *nextButton =
        newButton(tr("Next"), tr("Next hit (Enter, F3)"), QStringLiteral("findNext"));
    nextButton->setArrowType(Qt::RightArrow);
    QToolButton *closeButton =
        newButton(tr("Close"), tr("Close (Escape)"), QStringLiteral("findClose"));
    closeButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->addWidget(m_kind);
    layout->addWidget(m_text, 3);
    layout->addWidget(previousButton);
    layout->addWidget(nextButton);
    layout->addWidget(m_outcome, 4);
    layout->addWidget(closeButton);
    hide();

    connect(m_text, &QLineEdit::textChanged, this, &FindBar::changed);
    connect(m_kind, &QComboBox::currentIndexChanged, this, &FindBar::changed);
    connect(previousButton, &QToolButton::clicked, this, &FindBar::previous);
    connect(nextButton, &QToolButton::clicked, this, &FindBar::next);
    connect(closeButton, &QToolButton::clicked, this, &FindBar::close);
}

FindBar::Kind FindBar::kind() const
{
    return Kind(m_kind->currentIndex());
}

QString FindBar::text() const
{
    return m_text->text().trimmed();
}

void FindBar::open()
{
    QWidget *focus = QApplication::focusWidget();
    if (focus && !isAncestorOf(focus))
        m_focusBefore = focus;
    show();
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
    Q_EMIT changed();
}

void FindBar::close()
{
    if (isHidden())
        return;
    const QWidget *focus = QApplication::focusWidget();
    const bool hasFocus = focus && isAncestorOf(focus);
    hide();
    if (hasFocus && m_focusBefore)
        m_focusBefore->setFocus(Qt::OtherFocusReason);
    Q_EMIT closed();
}

void FindBar::tell(const QString &text, Outcome outcome)
{
    m_told = text;
    showOutcome();
    m_outcome->setToolTip(text.toHtmlEscaped());
    m_outcome->setAccessibleDescription(text);
    QPalette colors;
    if (outcome == Outcome::Failed)
        colors.setColor(QPalette::WindowText, KEO::faultColor(palette().color(QPalette::Window)));
    m_outcome->setPalette(colors);
}

void FindBar::showOutcome()
{
    m_outcome->setText(m_outcome->fontMetrics().elidedText(m_told, Qt::ElideRight,
                                                           m_outcome->contentsRect().width()));
}

void FindBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layout()->activate(); // or the outcome still has the width before
    showOutcome();
}

void FindBar::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool isPlain = modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F3:
        if (!isPlain)
            break;
        if (modifiers == Qt::ShiftModifier)
            Q_EMIT previous();
        else
            Q_EMIT next();
        return;
    case Qt::Key_Escape:
        close();
        return;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

} // namespace WaveMonitor
