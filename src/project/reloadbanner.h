#pragma once

#include <QWidget>

class QBoxLayout;
class QLabel;
class QPushButton;

namespace KEO {

/// A strip above a project's page that tells what happened to its core description on disk, with
/// buttons to act on it, and in a second line what is different in it. Acts on nothing itself.
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
    /// Whether the description can be loaded: else settings have nowhere to go. It can at first.
    void setLoadable(bool isLoadable);
    /// Tells \a line below the message, shortened where there is no room. With \a hasMore there is
    /// a button that asks for more of it.
    void setDetails(const QString &line, bool hasMore);

    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void reload();
    void reloadAndKeep();
    void closeIt();
    /// The user asks for more than the line below the message.
    void detailsAsked();
    // For a strip with a way to dismiss it, which this one has not.
    void cancel();
    void keepIt();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class PathLabel;

    void arrange();
    void updateButtons();
    /// Of all that stands beside texts and buttons.
    [[nodiscard]] int surroundingWidth() const;
    [[nodiscard]] int buttonRowWidth() const;

    QBoxLayout *m_body;          // texts and buttons, beside or below one another
    QBoxLayout *m_buttons;       // child layout
    PathLabel *m_file;           // child; the message
    QLabel *m_sign;              // child
    QLabel *m_details;           // child; hidden without details
    QPushButton *m_detailButton; // child; hidden if there is no more to show
    QPushButton *m_button;       // child
    QPushButton *m_keep;         // child; hidden unless it offers to reload
    bool m_isEnabled = true;
    bool m_isLoadable = true;
};

} // namespace KEO
