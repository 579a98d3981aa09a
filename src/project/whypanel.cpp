#include "whypanel.h"

#include <widgets/formwidgets.h>

#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>

namespace KEO {

namespace {

constexpr QSize kSize(560, 360);

} // namespace

WhyPanel::WhyPanel(QWidget *parent)
    : SideWindow(QStringLiteral("whyNoTrigger"), tr("Why No Trigger"), parent),
      m_about(named(new QLabel(tr("&Capture:")), "whyAbout")),
      m_captures(named(new QComboBox, "whyCaptures")),
      m_list(named(new QListWidget, "whyLines")),
      m_sample(named(new QPushButton(tr("Show &Sample")), "whySample")),
      m_setting(named(new QPushButton(tr("Show Se&tting")), "whySetting"))
{
    m_about->setBuddy(m_captures);
    m_list->setAccessibleName(tr("Why the core did not trigger"));
    m_list->setWordWrap(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setResizeMode(QListView::Adjust); // lines wrap anew
    auto *close = named(new QPushButton(tr("Close")), "whyClose");
    for (QPushButton *button : {m_sample, m_setting, close})
        button->setAutoDefault(false); // Enter is the list's

    auto *top = new QHBoxLayout;
    top->addWidget(m_about);
    top->addWidget(m_captures, 1);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_sample);
    bottom->addWidget(m_setting);
    bottom->addStretch();
    bottom->addWidget(close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_list, 1);
    layout->addLayout(bottom);
    setTabOrder(m_captures, m_list);
    m_list->setFocus();
    resize(kSize);

    connect(m_captures, &QComboBox::currentIndexChanged, this, &WhyPanel::chosen);
    connect(m_list, &QListWidget::currentRowChanged, this, &WhyPanel::updateButtons);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &WhyPanel::follow);
    connect(m_sample, &QPushButton::clicked, this, &WhyPanel::showSample);
    connect(m_setting, &QPushButton::clicked, this, &WhyPanel::showSetting);
    connect(close, &QPushButton::clicked, this, &WhyPanel::close);
}

void WhyPanel::setCaptures(const QStringList &titles, int current)
{
    const QSignalBlocker blocker(m_captures);
    QStringList shown;
    for (int i = 0; i < m_captures->count(); ++i)
        shown.append(m_captures->itemText(i));
    if (shown != titles) { // its list may be open
        m_captures->clear();
        m_captures->addItems(titles);
    }
    m_captures->setCurrentIndex(current);
    m_captures->setEnabled(titles.size() > 1);
}

void WhyPanel::tell(const QList<DiagnosisLine> &lines, bool hasWaves)
{
    m_hasWaves = hasWaves;
    if (lines != m_lines) {
        const DiagnosisLine *before = currentLine();
        const QString text = before ? before->text : QString();
        const QSignalBlocker blocker(m_list);
        m_list->clear();
        m_lines = lines;
        const QIcon warning(QStringLiteral(":/keo/image/warning.png"));
        const QIcon note = style()->standardIcon(QStyle::SP_MessageBoxInformation);
        int current = 0;
        for (const DiagnosisLine &line : lines) {
            const bool isObstacle = line.weight == TriggerFinding::Weight::Obstacle;
            if (line.text == text)
                current = m_list->count();
            m_list->addItem(new QListWidgetItem(isObstacle ? warning : note, line.text));
        }
        m_list->setCurrentRow(current);
    }
    updateButtons();
}

const DiagnosisLine *WhyPanel::currentLine() const
{
    const int row = m_list->currentRow();
    return row >= 0 && row < m_lines.size() ? &m_lines[row] : nullptr;
}

void WhyPanel::updateButtons()
{
    const DiagnosisLine *line = currentLine();
    const bool hasSample = line && line->sample;
    m_sample->setEnabled(hasSample && m_hasWaves);
    m_sample->setToolTip(hasSample && !m_hasWaves
                             ? tr("The waves of this capture have gone with the run that came next")
                             : QString());
    m_setting->setEnabled(line && line->subject != TriggerFinding::Subject::Core);
}

void WhyPanel::follow()
{
    if (m_sample->isEnabled())
        showSample();
    else if (m_setting->isEnabled())
        showSetting();
}

void WhyPanel::showSample()
{
    if (const DiagnosisLine *line = currentLine(); line && line->sample)
        Q_EMIT sampleAsked(*line->sample);
}

void WhyPanel::showSetting()
{
    if (const DiagnosisLine *line = currentLine())
        Q_EMIT settingAsked({line->subject, line->index, line->weight, line->text});
}

void WhyPanel::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && focusWidget() == m_list)
        follow();
    else
        SideWindow::keyPressEvent(event);
}

} // namespace KEO
