#include "programmerpage.h"

#include <programmer_ui/keoprogrammerwidget.h>
#include <widgets/messagebox.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QWidgetAction>

namespace KEO {

namespace {

QString styleOf(const QString &background)
{
    return QStringLiteral("background-color:%1;font-size:12px;color:black").arg(background);
}

} // namespace

ProgrammerPage::ProgrammerPage(QObject *parent)
    : QObject(parent), m_statusAction(new QWidgetAction(this)), m_statusLabel(new QLabel)
{
    m_statusLabel->setObjectName(QStringLiteral("programStatusLabel"));
    m_statusLabel->hide();
    auto *statusWidget = new QWidget;
    statusWidget->setObjectName(QStringLiteral("programStatusWidget"));
    auto *layout = new QHBoxLayout(statusWidget);
    layout->setContentsMargins(3, 6, 3, 6);
    layout->addWidget(m_statusLabel);
    m_statusAction->setDefaultWidget(statusWidget);
    reset();
}

ProgrammerPage::~ProgrammerPage() = default;

KeoProgrammerWidget *ProgrammerPage::makeWidget()
{
    m_widget = new KeoProgrammerWidget;
    m_widget->setObjectName(QStringLiteral("programmerWidget"));
    return m_widget;
}

KeoProgrammerWidget *ProgrammerPage::widget() const
{
    return m_widget;
}

void ProgrammerPage::reset()
{
    if (m_widget)
        m_widget->reset();
    setStatus(false, tr(" Please Program fs file first "));
}

void ProgrammerPage::setStatus(bool isReady, const QString &text)
{
    if (!m_statusLabel)
        return;
    m_statusLabel->setText(text);
    m_statusLabel->setStyleSheet(
        styleOf(isReady ? QStringLiteral("rgb(0,205,102)") : QStringLiteral("red")));
}

void ProgrammerPage::showStatus(bool isShown)
{
    if (m_statusLabel)
        m_statusLabel->setVisible(isShown);
}

bool ProgrammerPage::isInUse() const
{
    return m_widget && m_widget->isEnabledByUser();
}

bool ProgrammerPage::needsProgramming() const
{
    return isInUse() && m_widget->status() != ProgrammerStatus::Downloaded;
}

bool ProgrammerPage::mayCapture(QWidget *parent) const
{
    if (!isInUse())
        return true;
    const QPointer<const ProgrammerPage> self(this);
    if (!m_widget->validate() || !self)
        return false;
    if (!needsProgramming())
        return true;
    // The buttons are off by now, so this guards only against other ways to Start.
    return showBox(QMessageBox::Warning, parent, tr("Warning"),
                   tr("Fs file is not download successfully, still start analyzer?"),
                   QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes) == QMessageBox::Yes;
}

QVariantList ProgrammerPage::deviceChain() const
{
    if (!isInUse())
        return {0};
    QVariantList chain;
    for (const int code : chainCodes(m_widget->rows()))
        chain.append(code);
    return chain;
}

} // namespace KEO
