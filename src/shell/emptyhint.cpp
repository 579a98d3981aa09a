#include "emptyhint.h"

#include "choicelist.h"
#include "recentfiles.h"

#include <design/recoverystore.h>
#include <widgets/colormix.h>
#include <widgets/elidedlabel.h>
#include <widgets/formwidgets.h>

#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QKeySequence>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr qreal kTitleScale = 1.4;  // of the window's font
constexpr qreal kQuietShare = 0.62; // of the text's colour, the rest is the page's
constexpr int kRowGap = 6;          // pixels
constexpr int kColumnGap = 16;
constexpr int kTitleGap = 14;
constexpr int kListWidth = 640;

QString shown(const QKeySequence &key)
{
    return key.toString(QKeySequence::NativeText);
}

QFont enlarged(QFont font)
{
    if (font.pixelSize() > 0) // a desktop may give its font in pixels
        font.setPixelSize(qRound(font.pixelSize() * kTitleScale));
    else
        font.setPointSizeF(font.pointSizeF() * kTitleScale);
    return font;
}

/// Scrolls once its lists are as low as they may be, not sooner.
class Content final : public QWidget
{
public:
    [[nodiscard]] int heightForWidth(int width) const override
    {
        return layout()->minimumHeightForWidth(width);
    }
};

QScrollArea *makeScrollArea(QWidget *content)
{
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(content);
    for (QWidget *clear : {content, area->viewport()}) // the tab widget's page shows through
        clear->setAutoFillBackground(false);
    return area;
}

} // namespace

EmptyHint::EmptyHint(QTabWidget *tabs)
    : QWidget(tabs),
      m_tabs(tabs),
      m_area(makeScrollArea(new Content)),
      m_refused(new QLabel),
      m_example(new QWidget),
      m_try(named(new QPushButton(tr("&Try the example on the simulated board")), "exampleButton")),
      m_tryText(new QLabel)
{
    setObjectName(QStringLiteral("emptyHint"));

    auto *title = new QLabel(tr("No design is open"));
    title->setFont(enlarged(font()));

    m_refused->setObjectName(QStringLiteral("refusedFile"));
    m_refused->setTextFormat(Qt::PlainText); // names and reasons may look like markup
    m_refused->setAlignment(Qt::AlignHCenter);
    m_refused->setWordWrap(true);
    m_refused->hide();

    auto *example = new QVBoxLayout(m_example);
    example->setContentsMargins(0, 0, 0, 0);
    example->setSpacing(kRowGap);
    example->addWidget(m_try, 0, Qt::AlignHCenter);
    example->addWidget(m_tryText);
    m_try->setAutoDefault(true); // takes Enter as well as the space bar
    m_tryText->setTextFormat(Qt::PlainText);
    m_tryText->setAlignment(Qt::AlignHCenter);
    m_tryText->setWordWrap(true);
    m_example->hide();
    // The page goes with the click, and the button with it.
    connect(m_try, &QPushButton::clicked, this, &EmptyHint::exampleRequested, Qt::QueuedConnection);

    auto *keys = new QGridLayout;
    keys->setHorizontalSpacing(kColumnGap);
    keys->setVerticalSpacing(kRowGap);
    addKey(keys, shown(QKeySequence::Open), tr("Open a core description or a project"));
    addKey(keys, shown(Qt::Key_F1), tr("Start a capture of the open design"));
    addKey(keys, shown(Qt::Key_F2), tr("Capture again and again"));
    addKey(keys, shown(Qt::Key_F3), tr("Trigger now"));
    addKey(keys, shown(Qt::Key_F4), tr("Stop"));

    auto *lists = new QVBoxLayout;
    lists->setSpacing(kRowGap);
    m_recoveries = addList(lists, tr("&Captures that were not saved"), "recoveryList");
    m_recent = addList(lists, tr("R&ecent files"), "recentList");
    auto *middle = new QHBoxLayout; // as wide as they may be, and centred
    middle->addStretch(1);
    middle->addLayout(lists, kListWidth);
    middle->addStretch(1);

    auto *layout = new QVBoxLayout(m_area->widget());
    layout->setSpacing(kTitleGap);
    layout->addStretch();
    layout->addWidget(title, 0, Qt::AlignHCenter);
    layout->addWidget(m_refused);
    layout->addWidget(m_example);
    layout->addLayout(keys);
    layout->setAlignment(keys, Qt::AlignHCenter);
    layout->addLayout(middle);
    layout->addStretch();
    auto *page = new QVBoxLayout(this);
    page->setContentsMargins(0, 0, 0, 0);
    page->addWidget(m_area);

    mute();
    tabs->installEventFilter(this);
    connect(tabs, &QTabWidget::currentChanged, this, &EmptyHint::follow);
    follow();
}

void EmptyHint::setRefused(const QString &file, const QString &reason)
{
    m_refused->setVisible(!file.isEmpty());
    if (file.isEmpty())
        return;
    const QString path = QDir::toNativeSeparators(QFileInfo(file).absoluteFilePath());
    m_refused->setText(tr("%1 was not opened.\n%2").arg(path, reason));
    if (isVisible())
        fillLists(); // what is gone is offered no longer
    m_area->verticalScrollBar()->setValue(0);
}

void EmptyHint::offerExample(const QString &folder)
{
    m_tryText->setText(tr("A UART receiver in front of a FIFO, without hardware. Your copy of it "
                          "stands in %1.")
                           .arg(QDir::toNativeSeparators(folder)));
    m_example->show();
    m_try->setFocus(); // else the bar without tabs has it, and Enter does nothing
}

ChoiceList *EmptyHint::addList(QVBoxLayout *layout, const QString &title, const char *name)
{
    auto *list = named(new ChoiceList, name);
    list->setMaximumWidth(kListWidth);
    QLabel *label = labelFor(list, title);
    label->setObjectName(QString::fromLatin1(name) + QStringLiteral("Title"));
    layout->addWidget(label);
    layout->addWidget(list);
    // The page goes with the first click, and the list with it.
    connect(list, &ChoiceList::chosen, this, &EmptyHint::openRequested, Qt::QueuedConnection);
    connect(
        list, &ChoiceList::currentItemChanged, this, [this, list] { showCurrent(list); },
        Qt::QueuedConnection); // once the list has scrolled to it
    return list;
}

void EmptyHint::showCurrent(const ChoiceList *list)
{
    const QRect row = list->visualItemRect(list->currentItem());
    const int y = list->viewport()->mapTo(m_area->widget(), row.center()).y();
    if (list->hasFocus())
        m_area->ensureVisible(m_area->horizontalScrollBar()->value(), y, 0, row.height());
}

void EmptyHint::fillLists()
{
    const QSignalBlocker recoveriesBlocker(m_recoveries); // the page stays where it is scrolled to
    const QSignalBlocker recentBlocker(m_recent);
    const auto [recovery, recent] = std::pair(m_recoveries->currentRow(), m_recent->currentRow());
    m_recoveries->clear();
    for (const Recovery &entry : RecoveryStore().entries()) {
        const QString text =
            tr("%1   %2, %3")
                .arg(QLocale().toString(entry.time, QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                     QFileInfo(entry.description).fileName(), entry.windowText());
        const QString origin = QDir::toNativeSeparators(entry.description);
        m_recoveries->addChoice(text, entry.project, tr("%1: %2").arg(origin, entry.windowText()),
                                true);
    }
    m_recent->clear();
    for (const QString &path : RecentFiles().paths()) {
        const QFileInfo file(path);
        const QString folder = QDir::toNativeSeparators(file.path());
        m_recent->addChoice(tr("%1   %2").arg(file.fileName(), folder), path,
                            QDir::toNativeSeparators(path), file.isFile());
    }
    m_recoveries->setCurrentRow(std::min(recovery, m_recoveries->count() - 1));
    m_recent->setCurrentRow(std::min(recent, m_recent->count() - 1));
    for (ChoiceList *list : {m_recoveries, m_recent}) {
        list->setVisible(list->count() > 0);
        findChild<QLabel *>(list->objectName() + QStringLiteral("Title"))
            ->setVisible(list->count() > 0);
    }
}

void EmptyHint::addKey(QGridLayout *keys, const QString &key, const QString &meaning)
{
    const int row = keys->rowCount();
    keys->addWidget(new QLabel(key), row, 0, Qt::AlignRight);
    auto *text = new ElidedLabel;
    text->setText(meaning);
    keys->addWidget(text, row, 1);
}

bool EmptyHint::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_tabs && event->type() == QEvent::Resize)
        follow();
    return QWidget::eventFilter(watched, event);
}

/// The colour is made of two of the palette, and a label keeps what it was given.
void EmptyHint::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        mute();
    QWidget::changeEvent(event);
}

void EmptyHint::showEvent(QShowEvent *event)
{
    fillLists();
    QWidget::showEvent(event);
}

void EmptyHint::mute()
{
    const QPalette &window = m_tabs->palette();
    const QColor quiet =
        mixed(window.color(QPalette::Window), window.color(QPalette::WindowText), kQuietShare);
    for (QLabel *label : findChildren<QLabel *>()) {
        QPalette own = label->palette();
        if (label == m_refused || own.color(QPalette::WindowText) == quiet)
            continue;
        own.setColor(QPalette::WindowText, quiet);
        label->setPalette(own);
    }
}

void EmptyHint::follow()
{
    const bool hadFocus = window()->focusWidget() && isAncestorOf(window()->focusWidget());
    setGeometry(m_tabs->rect());
    setVisible(m_tabs->count() == 0);
    raise();
    if (isHidden() && hadFocus)
        m_tabs->setFocus();
}

} // namespace KEO
