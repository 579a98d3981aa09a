#include "descriptionwatch.h"

#include "reloadbanner.h"

#include <QBoxLayout>
#include <QFileInfo>

#include <utility>

namespace KEO {

DescriptionWatch::DescriptionWatch(std::function<bool()> isBusy, QObject *parent)
    : QObject(parent), m_isBusy(std::move(isBusy))
{
    connect(&m_fileWatcher, &FileWatch::fileChanged, this, &DescriptionWatch::onFileChanged);
}

void DescriptionWatch::start(const QString &keoFilePath, QWidget *page)
{
    stop();
    m_page = page;
    removeBanners();
    m_keoFilePath = keoFilePath;
    m_fileWatcher.watch(keoFilePath);
}

void DescriptionWatch::stop()
{
    m_fileWatcher.stop();
    removeBanners();
    m_keoFilePath.clear();
    m_reloadPending = false;
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
        banner->setButtonEnabled(isEnabled);
}

void DescriptionWatch::onFileChanged(const QString &path)
{
    if (m_isBusy()) {
        m_reloadPending = true;
        return;
    }
    const QString shownPath = path.isEmpty() ? m_keoFilePath : path;
    if (!QFileInfo::exists(m_keoFilePath)) {
        // An older banner stays below: what it tells has happened too.
        addBanner(ReloadBanner::Removed, shownPath);
        return;
    }
    removeBanners();
    addBanner(ReloadBanner::Changed, shownPath);
}

void DescriptionWatch::addBanner(int mode, const QString &path)
{
    auto *layout = m_page ? qobject_cast<QBoxLayout *>(m_page->layout()) : nullptr;
    if (!layout)
        return;
    m_reloadBanner = new ReloadBanner(mode, path, m_page);
    connect(m_reloadBanner, &ReloadBanner::reload, this, &DescriptionWatch::onReloadKeoFile);
    connect(m_reloadBanner, &ReloadBanner::closeIt, this, &DescriptionWatch::onBannerClose);
    layout->insertWidget(0, m_reloadBanner);
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
}

void DescriptionWatch::onReloadKeoFile()
{
    if (m_isBusy())
        return;
    removeBanner(std::exchange(m_reloadBanner, nullptr));
    const QPointer<DescriptionWatch> self(this);
    const QString path = m_keoFilePath;
    if (QFileInfo::exists(path))
        Q_EMIT reopenRequested(path);
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
