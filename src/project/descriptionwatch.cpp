#include "descriptionwatch.h"

#include "changelist.h"
#include "reloadbanner.h"

#include <config/descriptiondiff.h>
#include <config/descriptionkind.h>
#include <widgets/scrollpage.h>

#include <QBoxLayout>
#include <QFileInfo>
#include <QIcon>
#include <QTabWidget>

#include <algorithm>
#include <chrono>
#include <utility>

namespace KEO {

namespace {

using namespace std::chrono_literals;

constexpr auto kHoldStep = 300ms;                   // between looks at a file that is being written
constexpr std::chrono::milliseconds kPatience = 4s; // with one that is no description

/// The description in \a bytes, if a project can be opened with it.
Result<LoadedDescription> usableDescription(const Result<QByteArray> &bytes)
{
    if (!bytes)
        return bytes.error();
    Result<LoadedDescription> description = loadDescription(*bytes);
    if (description && description->lite.size() > 1)
        return Error{Error::Format,
                     DescriptionWatch::tr("It has %1 lite cores, and a lite design has one.")
                         .arg(description->lite.size())};
    return description;
}

} // namespace

DescriptionWatch::DescriptionWatch(std::function<bool()> isBusy, QObject *parent)
    : QObject(parent), m_isBusy(std::move(isBusy))
{
    m_holdTimer.setSingleShot(true);
    connect(&m_holdTimer, &QTimer::timeout, this, [this] { onFileChanged({}); });
    connect(&m_fileWatcher, &FileWatch::fileChanged, this, [this](const QString &path) {
        m_heldSince.invalidate(); // somebody is at work
        onFileChanged(path);
    });
    connect(&m_fileWatcher, &FileWatch::attributesChanged, this, [this](const QString &path) {
        const Result<QByteArray> bytes = descriptionBytes(path);
        if (m_reloadBanner || (bytes && *bytes != m_opened))
            onFileChanged(path);
    });
}

void DescriptionWatch::prepare(const QString &keoFilePath)
{
    stop();
    m_isPrepared = true;
    m_keoFilePath = keoFilePath;
    m_fileWatcher.watch(keoFilePath);
    const Result<QByteArray> bytes = descriptionBytes(keoFilePath);
    m_opened = bytes ? *bytes : QByteArray();
}

void DescriptionWatch::start(const QString &keoFilePath, QWidget *page)
{
    if (!m_isPrepared || m_keoFilePath != keoFilePath)
        prepare(keoFilePath);
    m_isPrepared = false;
    m_page = page;
    removeBanners();
    tellPending();
}

void DescriptionWatch::stop()
{
    m_opened.clear();
    m_changes.clear();
    if (m_changeList)
        m_changeList->close();
    m_fileWatcher.stop();
    m_holdTimer.stop();
    m_heldSince.invalidate();
    removeBanners();
    m_keoFilePath.clear();
    m_reloadPending = false;
    m_isPrepared = false;
}

void DescriptionWatch::tellPending()
{
    if (std::exchange(m_reloadPending, false))
        onFileChanged({});
}

void DescriptionWatch::setButtonsEnabled(bool isEnabled) const
{
    if (!m_page)
        return;
    for (ReloadBanner *banner : m_page->findChildren<ReloadBanner *>())
        banner->setButtonsEnabled(isEnabled);
}

void DescriptionWatch::onFileChanged(const QString &path)
{
    if (m_isBusy() || m_isPrepared) {
        m_reloadPending = true;
        return;
    }
    const QString shownPath = path.isEmpty() ? m_keoFilePath : path;
    if (!QFileInfo::exists(m_keoFilePath)) {
        // An older banner stays below: what it tells has happened too.
        if (m_reloadBanner)
            m_reloadBanner->setLoadable(false);
        addBanner(ReloadBanner::Removed, shownPath);
        return;
    }
    removeBanners();
    if (!isHeldBack())
        addBanner(ReloadBanner::Changed, shownPath);
}

void DescriptionWatch::addBanner(int mode, const QString &path)
{
    auto *layout = m_page ? qobject_cast<QBoxLayout *>(m_page->layout()) : nullptr;
    if (!layout)
        return;
    m_reloadBanner = new ReloadBanner(mode, path, m_page);
    connect(m_reloadBanner, &ReloadBanner::reload, this, &DescriptionWatch::onReloadKeoFile);
    connect(m_reloadBanner, &ReloadBanner::reloadAndKeep, this, &DescriptionWatch::onReloadAndKeep);
    connect(m_reloadBanner, &ReloadBanner::closeIt, this, &DescriptionWatch::onBannerClose);
    connect(m_reloadBanner, &ReloadBanner::detailsAsked, this, &DescriptionWatch::showChanges);
    if (mode == ReloadBanner::Changed)
        tellChanges(*m_reloadBanner);
    layout->insertWidget(0, m_reloadBanner);
    markTab(true);
}

/// Also in the list, if that is open. With nothing in it, it goes: no button would lead there.
void DescriptionWatch::tellChanges(ReloadBanner &banner)
{
    m_changes.clear();
    const Result<LoadedDescription> now = usableDescription(descriptionBytes(m_keoFilePath));
    banner.setLoadable(bool(now));
    if (!now) {
        banner.setDetails(tr("It can't be loaded: %1").arg(now.error().message), false);
    } else if (const Result<LoadedDescription> before = usableDescription(m_opened)) {
        m_changes = descriptionChanges(*before, *now);
        banner.setDetails(summaryOf(m_changes), !m_changes.isEmpty());
    }
    if (m_changeList && m_changes.isEmpty())
        m_changeList->close();
    else if (m_changeList)
        m_changeList->setChanges(m_changes);
}

void DescriptionWatch::showChanges()
{
    if (m_changeList && m_changeList->giveBack())
        return;
    if (!m_changeList || !m_changeList->isVisible()) { // closed, and about to go
        m_changeList = new ChangeList(m_page->window());
        m_changeList->setChanges(m_changes);
    }
    m_changeList->reach();
}

bool DescriptionWatch::isHeldBack()
{
    if (descriptionKind(m_keoFilePath) != DescriptionKind::Unknown) {
        m_heldSince.invalidate();
        return false;
    }
    if (!m_heldSince.isValid())
        m_heldSince.start();
    if (m_heldSince.hasExpired(kPatience.count()))
        return false;
    m_holdTimer.start(kHoldStep);
    return true;
}

/// The user may be looking at the waves.
void DescriptionWatch::markTab(bool isMarked) const
{
    QWidget *ancestor = m_page ? m_page->parentWidget() : nullptr;
    while (ancestor && !qobject_cast<QTabWidget *>(ancestor))
        ancestor = ancestor->parentWidget();
    if (auto *tabs = qobject_cast<QTabWidget *>(ancestor))
        tabs->setTabIcon(tabs->indexOf(m_page),
                         isMarked ? QIcon(QStringLiteral(":/keo/image/warning.png")) : QIcon());
}

void DescriptionWatch::removeBanners() const
{
    if (!m_page)
        return;
    for (ReloadBanner *banner : m_page->findChildren<ReloadBanner *>())
        removeBanner(banner);
}

/// Not deleted at once: its own button may be asking.
void DescriptionWatch::removeBanner(ReloadBanner *banner) const
{
    if (!banner)
        return;
    banner->hide();
    if (m_page && m_page->layout())
        m_page->layout()->removeWidget(banner);
    banner->deleteLater();
    const QList<ReloadBanner *> left =
        m_page ? m_page->findChildren<ReloadBanner *>() : QList<ReloadBanner *>();
    if (std::ranges::none_of(left, [](const ReloadBanner *other) { return !other->isHidden(); }))
        markTab(false);
}

/// The part of the page that has the keyboard, or null.
QWidget *DescriptionWatch::focusInPage() const
{
    QWidget *focus = m_page ? m_page->window()->focusWidget() : nullptr;
    return focus && m_page->isAncestorOf(focus) ? focus : nullptr;
}

void DescriptionWatch::onReloadKeoFile()
{
    reload(&DescriptionWatch::reopenRequested);
}

void DescriptionWatch::onReloadAndKeep()
{
    // Closed and not opened, the design would be gone with all that was to be kept.
    if (!m_isBusy() && QFileInfo::exists(m_keoFilePath) &&
        !usableDescription(descriptionBytes(m_keoFilePath))) {
        onFileChanged({}); // tells why
        return;
    }
    reload(&DescriptionWatch::reopenAndKeepRequested);
}

void DescriptionWatch::reload(Reopen request)
{
    if (m_isBusy())
        return;
    removeBanner(std::exchange(m_reloadBanner, nullptr));
    // What the user could not know: a tool has begun to write once more.
    if (QFileInfo::exists(m_keoFilePath) && isHeldBack())
        return;
    const QPointer<DescriptionWatch> self(this);
    const QString path = m_keoFilePath;
    const QPointer<QWidget> page = m_page;
    const int place = page ? scrollPlaceOf(*page) : 0;
    const QPointer<QWidget> focus = focusInPage();
    if (QFileInfo::exists(path))
        Q_EMIT(this->*request)(path);
    // The page has been out of its window meanwhile.
    if (focus && focus->isVisible())
        focus->setFocus(Qt::OtherFocusReason);
    if (page)
        setScrollPlace(*page, place);
    if (self)
        Q_EMIT reloaded();
}

void DescriptionWatch::onBannerClose()
{
    if (m_isBusy())
        return;
    removeBanner(std::exchange(m_reloadBanner, nullptr));
    m_fileWatcher.stop();
    // Its button takes one banner away: an older one below goes when the page is used again.
    const QPointer<DescriptionWatch> self(this);
    const QPointer<QWidget> page = std::exchange(m_page, nullptr);
    Q_EMIT closeRequested();
    if (self && !m_keoFilePath.isEmpty()) // not closed, a capture is running
        m_page = page;
}

void DescriptionWatch::onBannerCancel()
{
    removeBanner(std::exchange(m_reloadBanner, nullptr));
    m_fileWatcher.watch(m_keoFilePath);
}

void DescriptionWatch::onBannerKeep()
{
    removeBanner(std::exchange(m_reloadBanner, nullptr));
    m_fileWatcher.stop();
}

} // namespace KEO
