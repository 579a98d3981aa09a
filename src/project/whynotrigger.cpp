#include "whynotrigger.h"

#include "configpage.h"
#include "wavemenuaction.h"
#include "wavetabs.h"
#include "whypanel.h"

#include <capture/capturemanager.h>
#include <design/design.h>
#include <design/rehearsal.h>
#include <wave/wavemonitorwidget.h>

#include <QEvent>
#include <QPushButton>
#include <QTabWidget>

#include <algorithm>
#include <chrono>
#include <iterator>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 5s;
constexpr int kBelowMiddle = 28; // pixels, where the tip stands

} // namespace

WhyNoTrigger::WhyNoTrigger(const ProjectParts &parts, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_action(new WaveMenuAction(tr("Why No Trigger?"), Qt::CTRL | Qt::SHIFT | Qt::Key_W,
                                  WaveMenuAction::Menus::Waves, this)),
      m_patience(new QTimer(this))
{
    const bool hasTrigger = parts.design.traits().kind != DescriptionKind::Lite;
    m_action->setObjectName(QStringLiteral("whyAction"));
    m_action->setEnabled(hasTrigger);
    m_action->setToolTip(hasTrigger ? tr("Tells what the trigger lacks in the captured samples")
                                    : tr("A lite core has no trigger"));
    m_patience->setObjectName(QStringLiteral("whyPatience"));
    m_patience->setSingleShot(true);
    m_patience->setInterval(kPatience);
    connect(m_action, &QAction::triggered, this, &WhyNoTrigger::show);
    connect(m_patience, &QTimer::timeout, this, &WhyNoTrigger::showOffer);
    connect(&parts.page, &ConfigPage::edited, this, &WhyNoTrigger::refresh);
    const CaptureManager &manager = parts.design.manager();
    connect(&manager, &CaptureManager::statusChanged, this, &WhyNoTrigger::followRun);
    connect(&manager, &CaptureManager::triggerComplete, this, [this] { followRun(false); });
}

WhyNoTrigger::~WhyNoTrigger()
{
    delete m_offer;
    delete m_panel;
}

void WhyNoTrigger::enter(QWidget *page, QWidget *window, QTabWidget *tabs)
{
    m_page = page;
    m_window = window;
    m_tabs = tabs;
    m_action->enter(window);
    if (page)
        page->addAction(m_action);
    if (window)
        window->installEventFilter(this);
}

void WhyNoTrigger::leave()
{
    m_patience->stop();
    delete m_offer;
    delete m_panel;
    forget();
    m_action->leave();
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = nullptr;
    m_tabs = nullptr;
}

void WhyNoTrigger::forget()
{
    m_captures.clear();
    m_current = 0;
    if (m_panel)
        m_panel->close();
}

std::vector<WhyNoTrigger::Capture> WhyNoTrigger::shownCaptures() const
{
    std::vector<Capture> captures;
    for (WaveMonitorWidget *monitor : m_parts.waves.monitors()) {
        Capture &capture = captures.emplace_back();
        capture.core = monitor->coreNumber();
        capture.title = monitor->windowTitle();
        capture.monitor = monitor;
        for (const WaveMonitor::SignalElement &signal : monitor->signalMap()) {
            capture.names.append(signal.name);
            capture.samples.append(signal.data);
        }
    }
    return captures;
}

void WhyNoTrigger::followWindows()
{
    m_action->offer(m_parts.waves.monitors());
    if (m_patience->isActive())
        m_patience->start(); // the run is getting on
    if (m_panel && m_panel->isVisible()) {
        gather();
        refresh();
    }
}

void WhyNoTrigger::keepWindows()
{
    std::vector<Capture> kept = shownCaptures();
    if (kept.empty())
        return;
    const auto isShown = [shown = kept](const Capture &before) {
        return std::ranges::find(shown, before.core, &Capture::core) != shown.end();
    };
    std::ranges::remove_copy_if(m_captures, std::back_inserter(kept), isShown);
    std::ranges::stable_sort(kept, {}, &Capture::core);
    m_captures = std::move(kept);
    m_current = std::min(m_current, int(m_captures.size()) - 1);
}

void WhyNoTrigger::show()
{
    if (!m_window || (m_panel && m_panel->giveBack()))
        return;
    if (!m_panel) {
        m_panel = new WhyPanel(m_window);
        connect(m_panel, &WhyPanel::chosen, this, &WhyNoTrigger::choose);
        connect(m_panel, &WhyPanel::sampleAsked, this, &WhyNoTrigger::showSample);
        connect(m_panel, &WhyPanel::settingAsked, this, &WhyNoTrigger::showSetting);
    }
    gather();
    m_panel->reach();
    refresh();
}

/// The window in front is what the user looks at; without one, it stays with the panel's. But in a
/// run that waits, what is asked for is a core that has not captured yet.
void WhyNoTrigger::gather()
{
    const QString titleBefore =
        m_captures.empty() ? QString() : m_captures[size_t(m_current)].title;
    keepWindows();
    const WaveMonitorWidget *front = m_parts.waves.current();
    const bool waits = !m_parts.design.waitingFor().isEmpty();
    const auto rank = [&](const Capture &capture) {
        const bool isBefore = capture.title == titleBefore;
        if (waits && !capture.monitor)
            return isBefore ? 3 : 2;
        return (front ? capture.monitor == front : isBefore) ? 1 : 0;
    };
    const auto meant = std::ranges::max_element(m_captures, {}, rank); // the first of the best
    m_current = meant == m_captures.end() ? 0 : int(meant - m_captures.begin());
}

void WhyNoTrigger::showTitles()
{
    QStringList titles;
    for (const Capture &capture : m_captures)
        titles.append(capture.monitor ? capture.title
                                      : tr("%1 of the last run").arg(capture.title));
    if (titles.isEmpty())
        titles.append(tr("none yet"));
    m_panel->setCaptures(titles, m_current);
}

void WhyNoTrigger::choose(int capture)
{
    m_current = std::max(0, capture);
    refresh();
}

void WhyNoTrigger::refresh()
{
    if (!m_panel || !m_panel->isVisible())
        return;
    showTitles();
    if (m_captures.empty()) {
        m_panel->tell({{TriggerFinding::Subject::Core,
                        0,
                        TriggerFinding::Weight::Note,
                        {},
                        tr("There is no capture to look at yet. Force Trigger (F3) gives one of "
                           "whatever the signals do.")}},
                      false);
        return;
    }
    const Capture &capture = m_captures[size_t(m_current)];
    const CoreConfig *core = std::as_const(m_parts.design).triggerCore(capture.core);
    if (!core)
        return;
    const PortSamples ports(*core, capture.names, capture.samples);
    QList<DiagnosisLine> lines;
    m_parts.page.withSettings([&] { lines = whyNoTrigger(*core, ports, rehearse(*core, ports)); });
    m_panel->tell(lines, capture.monitor);
}

void WhyNoTrigger::showSample(qsizetype sample)
{
    WaveMonitorWidget *monitor =
        m_captures.empty() ? nullptr : m_captures[size_t(m_current)].monitor.data();
    if (!monitor)
        return;
    if (m_tabs)
        m_tabs->setCurrentWidget(TabComparison::pageOf(monitor));
    monitor->showSample(int(sample));
    monitor->showValuesAt(int(sample));
}

void WhyNoTrigger::showSetting(const TriggerFinding &finding)
{
    if (m_captures.empty())
        return;
    if (m_tabs && m_page)
        m_tabs->setCurrentWidget(m_page);
    m_parts.page.showFinding(m_captures[size_t(m_current)].core, finding);
    if (m_window)
        m_window->activateWindow();
}

/// Told at every step of a run.
void WhyNoTrigger::followRun(bool isBusy)
{
    if (!isBusy || m_parts.design.waitingFor().isEmpty())
        hideOffer();
    else if (!m_patience->isActive() && !m_offer && m_action->isEnabled())
        m_patience->start();
}

void WhyNoTrigger::showOffer()
{
    if (!m_window || m_offer || m_parts.design.waitingFor().isEmpty())
        return;
    const QString key = m_action->shortcut().toString(QKeySequence::NativeText);
    m_offer = new QPushButton(tr("Why no trigger?  %1").arg(key), m_window);
    m_offer->setObjectName(QStringLiteral("whyOffer"));
    m_offer->setFocusPolicy(Qt::NoFocus); // like the tip; the key is for the keyboard
    m_offer->setToolTip(tr("Looks at the capture before"));
    connect(m_offer, &QPushButton::clicked, m_action, &QAction::trigger);
    placeOffer();
    m_offer->show();
}

void WhyNoTrigger::hideOffer()
{
    m_patience->stop();
    if (!m_offer)
        return;
    m_offer->hide();
    m_offer->deleteLater(); // it may be what was clicked
    m_offer = nullptr;
}

void WhyNoTrigger::placeOffer()
{
    QRect place(QPoint(), m_offer->sizeHint());
    place.moveCenter(m_window->rect().center());
    place.moveTop(m_window->rect().center().y() + kBelowMiddle);
    m_offer->setGeometry(place);
}

bool WhyNoTrigger::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Resize && m_offer)
        placeOffer();
    return QObject::eventFilter(watched, event);
}

} // namespace KEO
