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

/// A sentence with a path in it. Shows a long path without its middle rather than making the window
/// wide. What text() returns is whole.
class PathLabel final : public QLabel
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

QString keepTip()
{
    return ReloadBanner::tr(
        "The trigger and the arrangement of the waves go along as far as the new design holds "
        "them");
}

} // namespace

ReloadBanner::ReloadBanner(int mode, const QString &path, QWidget *parent)
    : QWidget(parent),
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
    connect(m_detailButton, &QPushButton::clicked, this, &ReloadBanner::detailsAsked);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_detailButton);
    buttons->addWidget(m_button);
    buttons->addWidget(m_keep);
    layout->addWidget(sign);
    layout->addLayout(texts);
    layout->addStretch();
    layout->addLayout(buttons);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ReloadBanner::setButtonsEnabled(bool isEnabled)
{
    const QString busy = tr("Not while a capture is running");
    m_button->setEnabled(isEnabled);
    m_button->setToolTip(isEnabled ? QString() : busy);
    m_keep->setEnabled(isEnabled);
    m_keep->setToolTip(isEnabled ? keepTip() : busy);
}

void ReloadBanner::setDetails(const QString &line, bool hasMore)
{
    m_details->setText(line);
    m_details->setVisible(!line.isEmpty());
    m_detailButton->setVisible(hasMore);
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
