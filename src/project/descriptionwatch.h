#pragma once

#include <base/filewatch.h>
#include <config/descriptionchange.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <functional>

class QWidget;

namespace KEO {

class ChangeList;
class ReloadBanner;

/// Watches the core description of an open project and tells the user in a banner above the
/// project's page when it was changed or removed. During a capture nothing shows; the change is
/// told when the capture is over. A file that a tool is still writing is told once it is a
/// description, or after a few seconds. While a banner shows, the page's tab has a warning sign.
/// The banner tells in a line what has changed since the description was opened, and opens the list
/// of it, or why the description can't be loaded any more.
/// The project does what the banner's buttons ask for.
class DescriptionWatch final : public QObject
{
    Q_OBJECT

public:
    /// \a isBusy says whether a capture is going on.
    explicit DescriptionWatch(std::function<bool()> isBusy, QObject *parent = nullptr);

    /// A description is about to be read: watches \a keoFilePath in place of another one. What is
    /// written until start, such as while the user is told in a box what its project lacks, is told
    /// then.
    void prepare(const QString &keoFilePath);
    /// The description has been opened. Banners come to the top of the vertical layout of \a page,
    /// which is borrowed.
    void start(const QString &keoFilePath, QWidget *page);
    /// The project is closed: nothing is watched or told any more, and what was told goes.
    void stop();
    /// Call it when no capture is going on: tells of a change during the last one, once.
    void tellPending();

    /// Whether the buttons of banners can be pressed: not during a capture.
    void setButtonsEnabled(bool isEnabled) const;

public Q_SLOTS:
    /// The file was changed or is gone. An empty \a path stands for the description's own.
    void onFileChanged(const QString &path);
    // These two do nothing during a capture, and the banner stays.
    void onReloadKeoFile();
    void onReloadAndKeep();
    void onBannerClose();
    /// Takes the banner away and goes on watching.
    void onBannerCancel();
    /// Takes the banner away and lets the file be.
    void onBannerKeep();

Q_SIGNALS:
    /// Open the description anew; it exists.
    void reopenRequested(const QString &keoFilePath);
    /// The same, with what the user has set and arranged.
    void reopenAndKeepRequested(const QString &keoFilePath);
    /// The user pressed one of the two buttons, and the description has been opened anew if it
    /// exists: a new download is for the user to decide.
    void reloaded();
    void closeRequested();

private:
    void addBanner(int mode, const QString &path);
    using Reopen = void (DescriptionWatch::*)(const QString &);
    void reload(Reopen request);
    void tellChanges(ReloadBanner &banner);
    void showChanges();
    void removeBanners() const;
    void removeBanner(ReloadBanner *banner) const;
    void markTab(bool isMarked) const;
    /// Is the file perhaps still being written? Then it will be told later.
    [[nodiscard]] bool isHeldBack();
    [[nodiscard]] QWidget *focusInPage() const;

    std::function<bool()> m_isBusy;
    FileWatch m_fileWatcher;
    QString m_keoFilePath;
    QPointer<QWidget> m_page;
    QPointer<ReloadBanner> m_reloadBanner; ///< the newest one, in the page
    QByteArray m_opened;                   ///< the description as it was opened
    QList<DescriptionChange> m_changes;    ///< since then, as the banner tells them
    QPointer<ChangeList> m_changeList;     ///< null when it is not open
    bool m_reloadPending = false;
    bool m_isPrepared = false; ///< and not yet started
    QTimer m_holdTimer;        ///< runs while a file is held back
    QElapsedTimer m_heldSince; ///< invalid while none is
};

} // namespace KEO
