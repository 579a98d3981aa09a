#include "comparedpage.h"

#include "comparisonline.h"
#include "differencemarks.h"
#include "spansync.h"

#include <wave/wavemonitorwidget.h>
#include <wave/windowstate.h>
#include <wave_data/windowcompare.h>
#include <wave_data/windowcontents.h>

#include <QAction>
#include <QKeyEvent>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace WaveMonitor {

namespace {

constexpr int kEqualParts = 10000; // pixels, scaled to what there is

int asSample(qsizetype sample)
{
    return int(std::clamp<qsizetype>(sample, std::numeric_limits<int>::min(),
                                     std::numeric_limits<int>::max()));
}

} // namespace

ComparedPage::ComparedPage(WaveMonitorWidget *upper, QWidget *parent)
    : QWidget(parent),
      m_splitter(new QSplitter(Qt::Vertical)),
      m_upper(upper),
      m_previous(
          newAction(tr("Previous Difference"), Qt::SHIFT | Qt::Key_F9, "previousDifference")),
      m_next(newAction(tr("Next Difference"), Qt::Key_F9, "nextDifference")),
      m_close(newAction(tr("Close Comparison"), Qt::Key_Escape, "closeComparison")),
      m_line(new ComparisonLine(m_previous, m_next, m_close))
{
    m_previous->setShortcut(Qt::SHIFT | Qt::Key_F9);
    m_next->setShortcut(Qt::Key_F9);
    for (QAction *action : {m_previous, m_next}) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }
    // What is looked for, and the hits, stand above, wherever the keyboard is.
    if (QAction *find = upper->findAction())
        addAction(find);
    addActions(upper->hitActions());
    connect(m_previous, &QAction::triggered, this, &ComparedPage::previousDifference);
    connect(m_next, &QAction::triggered, this, &ComparedPage::nextDifference);
    connect(m_close, &QAction::triggered, this, &ComparedPage::closeAsked, Qt::QueuedConnection);
    NotificationCenter::instance()->subscribe(
        this, {EvAfterMarkerCreate, EvAfterMarkerChange, EvAfterMarkerRemove});

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(upper);
    upper->show();
    upper->addWaveAction(m_previous);
    upper->addWaveAction(m_next);
    upper->addWaveAction(m_close);

    auto *below = new QWidget;
    auto *belowLayout = new QVBoxLayout(below);
    belowLayout->setContentsMargins(0, 0, 0, 0);
    belowLayout->setSpacing(0);
    belowLayout->addWidget(m_line);
    m_splitter->addWidget(below);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 1);
}

ComparedPage::~ComparedPage()
{
    NotificationCenter::instance()->unsubscribe(this);
    m_sync.reset();
    clearMarks();
}

QAction *ComparedPage::newAction(const QString &text, const QKeySequence &key, const char *name)
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setToolTip(QStringLiteral("%1 (%2)").arg(text, key.toString(QKeySequence::NativeText)));
    return action;
}

WaveMonitorWidget *ComparedPage::upper() const
{
    return m_upper;
}

quint64 ComparedPage::domain() const
{
    return m_upper ? m_upper->domain() : 0;
}

void ComparedPage::compareWith(const QString &title, const WindowSamples &other)
{
    m_sync.reset();
    clearMarks();
    m_current.reset();
    m_otherTitle = title;
    showBelow(other);
    m_comparison = std::make_unique<WindowComparison>(m_upper->contents(), m_lower->contents());
    giveRoom();
    showMarks();
    showValues();
    m_sync = std::make_unique<SpanSync>(*m_upper, *m_lower, m_comparison->offset());
    m_previous->setEnabled(m_comparison->firstDifference().has_value());
    m_next->setEnabled(m_previous->isEnabled());
    m_line->setText(lineText());
}

/// New samples leave the viewer below as the user has arranged it.
void ComparedPage::showBelow(const WindowSamples &other)
{
    if (!m_lower || m_lower->signalMap().keys() != other.elements.keys()) {
        newBelow(other);
        return;
    }
    QList<QBitArray> samples;
    for (const SignalElement &element : other.elements)
        samples.append(element.data);
    m_lower->updateData(samples);
    m_lower->setTriggerPosition(other.triggerPosition);
}

/// A viewer of \a other with the rows as they are above.
void ComparedPage::newBelow(const WindowSamples &other)
{
    delete m_lower;
    WindowContents contents;
    for (const SignalElement &element : other.elements)
        contents.addSignal(element);
    contents.setTriggerPosition(other.triggerPosition);
    const std::unique_ptr<WindowState> state = m_upper->saveState();
    state->scroll.reset(); // the place below is told in other numbers
    // The next viewer's numbers begin further on.
    m_lower = new WaveMonitorWidget(m_upper->domain() + 1, this, state.get());
    m_lower->setTitle(m_upper->windowNumber(), m_upper->coreNumber());
    m_lower->loadWindow(std::move(contents));
    m_lower->restoreState(state.get());
    m_lower->addWaveAction(m_previous);
    m_lower->addWaveAction(m_next);
    m_lower->addWaveAction(m_close);
    qobject_cast<QVBoxLayout *>(m_splitter->widget(1)->layout())->addWidget(m_lower, 1);
    m_splitter->setSizes({kEqualParts, kEqualParts});
    connect(m_upper, &WaveMonitorWidget::treeWidthChanged, m_lower,
            [this] { m_lower->setTreeWidth(m_upper->treeWidth()); });
    connect(m_lower, &WaveMonitorWidget::treeWidthChanged, m_upper,
            [this] { m_upper->setTreeWidth(m_lower->treeWidth()); });
    // Once it is laid out.
    QMetaObject::invokeMethod(
        m_lower, [this] { m_lower->setTreeWidth(m_upper->treeWidth()); }, Qt::QueuedConnection);
}

/// Both can scroll over all samples of either.
void ComparedPage::giveRoom()
{
    const qsizetype offset = m_comparison->offset();
    const qsizetype above = m_upper->contents().maxDataLength();
    const qsizetype below = m_lower->contents().maxDataLength();
    const qsizetype first = std::min<qsizetype>(0, -offset);
    const qsizetype end = std::max(above, below - offset);
    m_upper->setRoom(asSample(-first), asSample(end - above));
    m_lower->setRoom(asSample(-offset - first), asSample(end - (below - offset)));
}

void ComparedPage::showMarks()
{
    using Side = DifferenceMarks::Side;
    m_upperMarks = std::make_unique<DifferenceMarks>(*m_comparison, Side::A);
    m_lowerMarks = std::make_unique<DifferenceMarks>(*m_comparison, Side::B);
    m_upper->setOverlay(m_upperMarks.get());
    m_upper->setMarkedSignals(m_upperMarks->markedSignals());
    m_lower->setOverlay(m_lowerMarks.get());
    m_lower->setMarkedSignals(m_lowerMarks->markedSignals());
}

void ComparedPage::clearMarks()
{
    if (m_upper) {
        m_upper->setOverlay(nullptr);
        m_upper->setMarkedSignals({});
    }
    if (m_lower)
        m_lower->setOverlay(nullptr);
    m_upperMarks.reset();
    m_lowerMarks.reset();
}

WaveMonitorWidget *ComparedPage::takeUpper()
{
    m_sync.reset();
    clearMarks();
    delete m_lower;
    m_upper->setRoom(0, 0);
    for (QAction *action : {m_previous, m_next, m_close})
        m_upper->removeWaveAction(action);
    m_upper->setParent(nullptr);
    return std::exchange(m_upper, nullptr);
}

void ComparedPage::handleEvents(Notification *e)
{
    if (m_lower && concerns(*e, domain()))
        QMetaObject::invokeMethod(this, &ComparedPage::showValues, Qt::QueuedConnection);
}

/// Below stand the values at the sample whose values stand above.
void ComparedPage::showValues()
{
    if (m_lower && m_comparison)
        m_lower->showValuesAt(asSample(m_upper->contents().shownSample() + m_comparison->offset()));
}

void ComparedPage::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        m_close->trigger();
    else
        QWidget::keyPressEvent(event);
}

bool ComparedPage::isCurrentShown() const
{
    return m_current && qreal(*m_current + 1) > m_upper->firstShownSample() &&
           qreal(*m_current) < m_upper->lastShownSample();
}

void ComparedPage::nextDifference()
{
    if (!m_lower)
        return;
    goTo(m_comparison->nextDifference(
        isCurrentShown() ? *m_current : qsizetype(std::floor(m_upper->firstShownSample())) - 1));
}

void ComparedPage::previousDifference()
{
    if (!m_lower)
        return;
    goTo(m_comparison->previousDifference(
        isCurrentShown() ? *m_current : qsizetype(std::ceil(m_upper->lastShownSample()))));
}

void ComparedPage::goTo(std::optional<qsizetype> sample)
{
    if (!sample) {
        m_line->setText(tr("No further difference. %1").arg(lineText()));
        return;
    }
    m_current = sample;
    m_upperMarks->setCurrent(sample);
    m_lowerMarks->setCurrent(sample);
    m_upper->showSample(asSample(*sample));
    m_sync->align();
    m_upper->updateOverlay();
    m_lower->updateOverlay();
    m_line->setText(lineText());
}

QString ComparedPage::lineText() const
{
    const int trigger = m_upper->contents().triggerPosition();
    QString text = comparisonText(*m_comparison, m_otherTitle, trigger);
    if (m_current)
        text += u' ' + differenceText(*m_comparison, *m_current, trigger);
    return text;
}

} // namespace WaveMonitor
