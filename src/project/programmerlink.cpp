#include "programmerlink.h"

#include "waitingtip.h"

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

ProgrammerLink::ProgrammerLink(QObject *parent)
    : QObject(parent), m_statusAction(new QWidgetAction(this)), m_statusLabel(new QLabel)
{
    m_statusLabel->setTextFormat(Qt::PlainText); // it shows what the tool says
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

ProgrammerLink::~ProgrammerLink() = default;

QWidget *ProgrammerLink::makePage()
{
    m_page = new KeoProgrammerWidget;
    m_page->setObjectName(QStringLiteral("programmerWidget"));
    connect(this, &ProgrammerLink::busyChanged, m_page, &KeoProgrammerWidget::updateIsBusy);
    connect(this, &ProgrammerLink::cableChanged, m_page, &KeoProgrammerWidget::updateCable);
    connect(this, &ProgrammerLink::channelChanged, m_page, &KeoProgrammerWidget::updateChannel);
    connect(m_page, &KeoProgrammerWidget::programStatusChanged, this,
            &ProgrammerLink::programStatusChanged);
    connect(m_page, &KeoProgrammerWidget::enableChange, this, &ProgrammerLink::enableChange);
    connect(m_page, &KeoProgrammerWidget::rowsChanged, this, &ProgrammerLink::rowsChanged);
    connect(m_page, &KeoProgrammerWidget::toolRunning, this, [this](bool isRunning) {
        if (isRunning)
            WaitingTip::show(m_page->window());
        else
            WaitingTip::close();
        Q_EMIT toolRunning(isRunning);
    });
    return m_page;
}

void ProgrammerLink::reset()
{
    if (m_page)
        m_page->reset();
    setStatus(false, tr(" Please Program fs file first "));
}

void ProgrammerLink::setStatus(bool isReady, const QString &text)
{
    if (!m_statusLabel)
        return;
    m_statusLabel->setText(text);
    m_statusLabel->setStyleSheet(
        styleOf(isReady ? QStringLiteral("rgb(0,205,102)") : QStringLiteral("red")));
}

void ProgrammerLink::showStatus(bool isShown)
{
    if (m_statusLabel)
        m_statusLabel->setVisible(isShown);
}

void ProgrammerLink::setEnabled(bool isEnabled)
{
    if (m_page)
        m_page->setEnabled(isEnabled);
}

void ProgrammerLink::switchOff()
{
    if (m_page && !isRunning()) // else the user has let the run go on
        m_page->setEnabledByUser(false);
}

void ProgrammerLink::setDevice(const QString &family, const QString &device, const QString &fsFile)
{
    if (m_page)
        m_page->setDevice(family, device, fsFile);
}

void ProgrammerLink::nameDevice(const QString &family, const QString &device)
{
    if (m_page)
        m_page->nameDevice(family, device);
}

bool ProgrammerLink::isTableKept() const
{
    return m_page && m_page->isTableKept();
}

std::shared_ptr<const DeviceDatabase> ProgrammerLink::database() const
{
    return m_page ? m_page->database() : nullptr;
}

void ProgrammerLink::setDesignId(const QString &id)
{
    if (m_page)
        m_page->setDesignId(id);
}

void ProgrammerLink::applyPending()
{
    if (m_page)
        m_page->applyPending();
}

bool ProgrammerLink::isInUse() const
{
    return m_page && m_page->isEnabledByUser();
}

bool ProgrammerLink::needsProgramming() const
{
    return isInUse() && m_page->status() != ProgrammerStatus::Downloaded;
}

bool ProgrammerLink::isRunning() const
{
    return m_page && m_page->isRunning();
}

bool ProgrammerLink::mayEndRun(QWidget *parent) const
{
    return !m_page || m_page->mayEndRun(parent);
}

bool ProgrammerLink::mayCapture(QWidget *parent) const
{
    if (isRunning())
        return false;
    if (!isInUse())
        return true;
    const QPointer<const ProgrammerLink> self(this);
    if (!m_page->validate() || !self)
        return false;
    if (!needsProgramming())
        return true;
    // The buttons are off by now, so this guards only against other ways to Start.
    return showBox(QMessageBox::Warning, parent, tr("Warning"),
                   tr("Fs file is not download successfully, still start analyzer?"),
                   QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes) == QMessageBox::Yes;
}

QVariantList ProgrammerLink::deviceChain() const
{
    if (!isInUse())
        return {0};
    QVariantList chain;
    for (const int code : chainCodes(m_page->rows()))
        chain.append(code);
    return chain;
}

QString ProgrammerLink::targetName() const
{
    return m_page ? m_page->targetName() : QString();
}

} // namespace KEO
