#pragma once

#include <QWidget>

class QPushButton;

namespace KEO {

/// A strip above a project's page that tells what happened to its core description on disk, with
/// buttons to act on it. Acts on nothing itself.
class ReloadBanner final : public QWidget
{
    Q_OBJECT

public:
    enum Mode : int {
        Changed = 0, ///< offers to reload
        Removed = 1  ///< offers to close
    };

    /// \a path stands in the message. Any other mode gives a strip without texts.
    ReloadBanner(int mode, const QString &path, QWidget *parent = nullptr);

    void setButtonsEnabled(bool isEnabled);

Q_SIGNALS:
    void reload();
    void reloadAndKeep();
    void closeIt();
    // For a strip with a way to dismiss it, which this one has not.
    void cancel();
    void keepIt();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPushButton *m_button; // child
    QPushButton *m_keep;   // child; hidden unless it offers to reload
};

} // namespace KEO
