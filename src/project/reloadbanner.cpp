#include "reloadbanner.h"

#include <widgets/colormix.h>
#include <widgets/elidedlabel.h>
#include <widgets/formwidgets.h>
#include <widgets/plaintip.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

namespace {

const QColor kAmber(0xf0, 0xa8, 0x28); // of the warning sign
constexpr qreal kFillShare = 0.22;     // of amber in the strip; enough on light and dark windows
constexpr qreal kLineShare = 0.70;
constexpr int kLeastPath = 12; // characters of a path beside the buttons

} // namespace

/// A sentence with a path in it. Shows a long path without its middle rather than making the window
/// wide. What text() returns is whole.
class ReloadBanner::PathLabel final : public QLabel
{
public:
    PathLabel()
    {
        setTextFormat(Qt::PlainText); // the path is the user's and may look like markup
    }

    /// \a sentence has "%1" where the path goes.
    void setSentence(const QString &sentence, const QString &path)
    {
        m_sentence = sentence;
        m_path = path;
        setText(sentence.arg(path));
        setToolTip(plainTip(path));
    }

    [[nodiscard]] QString sentence() const { return m_sentence; }

    [[nodiscard]] QSize minimumSizeHint() const override
    {
        return {fontMetrics().averageCharWidth() * kLeastCharacters,
                QLabel::minimumSizeHint().height()};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        style()->drawItemText(&painter, rect(), int(Qt::AlignVCenter | Qt::AlignLeft), palette(),
                              isEnabled(), shownText(), foregroundRole());
    }

private:
    static constexpr int kLeastCharacters = 20;

    [[nodiscard]] QString shownText() const
    {
        const QFontMetrics metrics = fontMetrics();
        const int whole = metrics.horizontalAdvance(text());
        if (whole <= width())
            return text();
        const int room = metrics.horizontalAdvance(m_path) - (whole - width());
        const QString path = metrics.elidedText(m_path, Qt::ElideMiddle, std::max(0, room));
        return metrics.elidedText(m_sentence.arg(path), Qt::ElideRight, width());
    }

    QString m_sentence;
    QString m_path;
};

namespace {

QString keepTip()
{
    return ReloadBanner::tr(
        "The trigger and the arrangement of the waves go along as far as the new design holds "
        "them");
}

} // namespace

ReloadBanner::ReloadBanner(int mode, const QString &path, QWidget *parent)
    : QWidget(parent),
      m_body(new QBoxLayout(QBoxLayout::LeftToRight)),
      m_details(named(new ElidedLabel, "labelDetails")),
      m_detailButton(named(new QPushButton(tr("&What changed...")), "buttonDetails")),
      m_button(new QPushButton),
      m_keep(new QPushButton)
{
    setObjectName(QStringLiteral("reloadBanner"));
    m_button->setObjectName(QStringLiteral("btnA"));
    m_keep->setObjectName(QStringLiteral("btnKeep"));
    m_keep->setText(tr("Reload and &keep settings"));
    m_keep->setToolTip(keepTip());
    connect(m_keep, &QPushButton::clicked, this, &ReloadBanner::reloadAndKeep);
    auto *labelFile = new PathLabel;
    labelFile->setObjectName(QStringLiteral("labelFile"));
    QFont bold = labelFile->font();
    bold.setBold(true);
    labelFile->setFont(bold);
    m_file = labelFile;

    if (mode == Changed) {
        labelFile->setSentence(tr("Keo file '%1' has been changed on disk."), path);
        m_button->setText(tr("Reload"));
        connect(m_button, &QPushButton::clicked, this, &ReloadBanner::reload);
    } else if (mode == Removed) {
        labelFile->setSentence(tr("Keo file '%1' has been removed on disk."), path);
        m_button->setText(tr("Close"));
        m_keep->hide();
        connect(m_button, &QPushButton::clicked, this, &ReloadBanner::closeIt);
    }

    auto *sign = new QLabel;
    sign->setPixmap(QPixmap(QStringLiteral(":/keo/image/warning.png")));
    auto *layout = new QHBoxLayout(this);
    auto *texts = new QVBoxLayout;
    texts->addWidget(labelFile);
    texts->addWidget(m_details);
    m_details->hide();
    m_detailButton->hide();
    m_detailButton->setFocusPolicy(Qt::TabFocus); // its key leaves the focus for the way back
    connect(m_detailButton, &QPushButton::clicked, this, &ReloadBanner::detailsAsked);
    // A click leaves the keyboard in the field where the user is at work.
    for (QPushButton *button : {m_detailButton, m_button, m_keep})
        button->setFocusPolicy(Qt::TabFocus);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_detailButton);
    buttons->addWidget(m_button);
    buttons->addWidget(m_keep);
    layout->addWidget(sign);
    layout->addLayout(m_body, 1);
    m_body->addLayout(texts, 1);
    m_body->addLayout(buttons);
    m_body->setAlignment(buttons, Qt::AlignRight | Qt::AlignVCenter);
    m_buttons = buttons;
    m_sign = sign;
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ReloadBanner::setButtonsEnabled(bool isEnabled)
{
    m_isEnabled = isEnabled;
    updateButtons();
}

void ReloadBanner::setLoadable(bool isLoadable)
{
    m_isLoadable = isLoadable;
    updateButtons();
}

void ReloadBanner::updateButtons()
{
    const QString busy = tr("Not while a capture is running");
    m_button->setEnabled(m_isEnabled);
    m_button->setToolTip(m_isEnabled ? QString() : busy);
    m_keep->setEnabled(m_isEnabled && m_isLoadable);
    const QString tip =
        m_isLoadable ? keepTip() : tr("Not before the description can be loaded again");
    m_keep->setToolTip(m_isEnabled ? tip : busy);
}

void ReloadBanner::setDetails(const QString &line, bool hasMore)
{
    m_details->setText(line);
    m_details->setVisible(!line.isEmpty());
    m_detailButton->setVisible(hasMore);
    arrange();
}

/// Not as wide as the buttons: a banner that comes must not make the window wider.
QSize ReloadBanner::minimumSizeHint() const
{
    return {surroundingWidth() + m_file->minimumSizeHint().width(),
            QWidget::minimumSizeHint().height()};
}

void ReloadBanner::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

int ReloadBanner::surroundingWidth() const
{
    const QMargins margins = layout()->contentsMargins();
    return margins.left() + m_sign->sizeHint().width() + layout()->spacing() + margins.right();
}

int ReloadBanner::buttonRowWidth() const
{
    int width = -m_buttons->spacing();
    for (const QPushButton *button : {m_detailButton, m_button, m_keep})
        width += button->isHidden() ? 0 : button->sizeHint().width() + m_buttons->spacing();
    return width;
}

/// A large font leaves the message no room beside the buttons; then they go below it, and below one
/// another where even their row has no room.
void ReloadBanner::arrange()
{
    const QFontMetrics metrics = m_file->fontMetrics();
    const int least = metrics.horizontalAdvance(m_file->sentence().arg(QString())) +
                      metrics.averageCharWidth() * kLeastPath;
    const int room = width() - surroundingWidth();
    const int row = buttonRowWidth();
    m_body->setDirection(room < row + m_body->spacing() + least ? QBoxLayout::TopToBottom
                                                                : QBoxLayout::LeftToRight);
    m_buttons->setDirection(room < row ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
}

void ReloadBanner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor base = palette().color(QPalette::Window);
    painter.fillRect(rect(), mixed(base, kAmber, kFillShare));
    painter.setPen(mixed(base, kAmber, kLineShare));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

} // namespace KEO
