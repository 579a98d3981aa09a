#include "reloadbanner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>

namespace KEO {

namespace {

const QColor kAmber(0xf0, 0xa8, 0x28); // of the warning sign
constexpr qreal kFillShare = 0.22;     // of amber in the strip; enough on light and dark windows
constexpr qreal kLineShare = 0.70;

QColor mixed(const QColor &base, const QColor &added, qreal share)
{
    const auto part = [share](float from, float to) { return from + (to - from) * float(share); };
    return QColor::fromRgbF(part(base.redF(), added.redF()), part(base.greenF(), added.greenF()),
                            part(base.blueF(), added.blueF()));
}

/// Shows a long path without its middle rather than making the window wide. What text() returns is
/// whole.
class ElidedLabel final : public QLabel
{
public:
    ElidedLabel()
    {
        setTextFormat(Qt::PlainText); // the path is the user's and may look like markup
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
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
        style()->drawItemText(&painter, rect(), int(Qt::AlignVCenter | Qt::AlignLeft), palette(),
                              isEnabled(), shown, foregroundRole());
    }

private:
    static constexpr int kLeastCharacters = 20;
};

} // namespace

ReloadBanner::ReloadBanner(int mode, const QString &path, QWidget *parent)
    : QWidget(parent), m_labelFile(new ElidedLabel), m_btnA(new QPushButton)
{
    setObjectName(QStringLiteral("reloadBanner"));
    m_labelFile->setObjectName(QStringLiteral("labelFile"));
    m_btnA->setObjectName(QStringLiteral("btnA"));
    QFont bold = m_labelFile->font();
    bold.setBold(true);
    m_labelFile->setFont(bold);

    if (mode == Changed) {
        m_labelFile->setText(tr("Keo file '%1' has been changed on disk.").arg(path));
        m_btnA->setText(tr("Reload"));
        connect(m_btnA, &QPushButton::clicked, this, &ReloadBanner::reload);
    } else if (mode == Removed) {
        m_labelFile->setText(tr("Keo file '%1' has been removed on disk.").arg(path));
        m_btnA->setText(tr("Close"));
        connect(m_btnA, &QPushButton::clicked, this, &ReloadBanner::closeIt);
    }
    m_labelFile->setToolTip(path);

    auto *sign = new QLabel;
    sign->setPixmap(QPixmap(QStringLiteral(":/keo/image/warning.png")));
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(sign);
    layout->addWidget(m_labelFile);
    layout->addStretch();
    layout->addWidget(m_btnA);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
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
