#include "exportdialog.h"

#include <wave/common/clockperiods.h>
#include <wave/wavemonitorwidget.h>
#include <wave_data/windowcontents.h>
#include <widgets/formwidgets.h>
#include <widgets/plaintip.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

namespace {

// In device-independent pixels; a larger font takes more.
constexpr QSize kPlainSize(500, 330);
constexpr QSize kSizeWithBuses(500, 478);

constexpr int kMaxPeriod = 9'999'999;

QComboBox *makeComboBox(const char *name, const QStringList &items)
{
    auto *box = named(new QComboBox, name);
    box->addItems(items);
    return box;
}

QHBoxLayout *sideBySide(QWidget *wide, QWidget *narrow)
{
    auto *layout = new QHBoxLayout;
    layout->addWidget(wide, 1);
    layout->addWidget(narrow);
    return layout;
}

QFrame *makeLine()
{
    auto *line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

/// For a field that is never enabled but there to be read.
QPalette legibleWhenDisabled(QPalette palette)
{
    QColor text = palette.color(QPalette::Active, QPalette::Text);
    text.setAlphaF(0.7F);
    palette.setColor(QPalette::Disabled, QPalette::Text, text);
    return palette;
}

/// Tells the user to wait for as long as it lives.
class WaitCursor final
{
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
};

} // namespace

ExportDialog::ExportDialog(const ExportSource &source, QWidget *parent)
    : QDialog(parent),
      m_editDir(named(new QLineEdit, "editDir")),
      m_comBoxKo(named(new QComboBox, "comBoxKo")),
      m_editClk(named(new QLineEdit, "editClk")),
      m_spinPeriod(named(new QSpinBox, "spinPeriod")),
      m_comBoxPeriod(makeComboBox(
          "comBoxPeriod", {QStringLiteral("us"), QStringLiteral("ns"), QStringLiteral("ps")})),
      m_editName(named(new QLineEdit, "editName")),
      m_comBoxFormat(makeComboBox("comBoxFormat",
                                  {tr("Comma Separated Values (*.csv)"),
                                   tr("Value Change Dump (*.vcd)"), tr("Tab_delimited Text(*.prn)"),
                                   tr("Plain Value Change Dump (*.plain.vcd)"),
                                   tr("Plain Comma Separated Values (*.plain.csv)"),
                                   tr("Fast Signal Trace of GTKWave (*.fst)")})),
      m_labelType(named(new QLabel, "label_type")),
      m_comboBoxForPRN(
          makeComboBox("comboBoxForPRN",
                       {tr("All Signals/Buses"), tr("Waveform Signals/Buses"), tr("Only Buses")})),
      m_checkFormulas(named(new QCheckBox, "checkFormulas")),
      m_listWidgetForBus(named(new QListWidget, "listWidgetForBus")),
      m_defaultDirectory(source.directory),
      m_projectMode(source.mode),
      m_cores(source.cores),
      m_waveMonitors(source.waveMonitors.begin(), source.waveMonitors.end()),
      m_clockPeriods(source.clockPeriods)
{
    setObjectName(QStringLiteral("ExportDialog"));
    setWindowTitle(tr("Export"));
    setWindowIcon(QIcon(QStringLiteral(":/keo/image/chip_tarno.png")));
    buildForm();

    m_editDir->setText(source.directory);
    m_editDir->setToolTip(plainTip(source.directory));
    for (const ExportCore &core : m_cores)
        m_comBoxKo->addItem(tr("Core %1").arg(core.index));
    updateSampleClk();
    showKnownPeriod();
    updatePeriodRange();
    updateTypeForPRN();
    updateFormulas();
    connectSlots();
    m_editName->setFocus(); // the one field without a choice made
}

void ExportDialog::buildForm()
{
    m_editDir->setReadOnly(true);
    m_editClk->setReadOnly(true);
    m_editClk->setEnabled(false);
    m_editClk->setPalette(legibleWhenDisabled(palette()));
    m_spinPeriod->setRange(1, kMaxPeriod);
    m_editName->setValidator(new QRegularExpressionValidator(exportNamePattern(), m_editName));
    m_labelType->setText(tr("Type:            "));
    m_labelType->setBuddy(m_comboBoxForPRN);
    m_comBoxPeriod->setAccessibleName(tr("Unit of the clock period"));
    m_checkFormulas->setText(tr("No title is a &formula"));
    m_checkFormulas->setToolTip(plainTip(
        tr("An apostrophe goes before titles that a spreadsheet would evaluate: those that begin "
           "with =, +, - or @.")));
    describeFormats();
    m_listWidgetForBus->setAccessibleName(tr("Buses to export"));

    auto *heading =
        new QLabel(tr("Specify Settings for exporting Tarno Signal Scope waveform data"));
    heading->setWordWrap(true);
    auto *browse = named(new QPushButton, "btnBrowse");
    browse->setText(tr("..."));
    browse->setToolTip(tr("Choose a directory"));
    browse->setFixedWidth(m_comBoxPeriod->sizeHint().width()); // the buttons stand in a line
    browse->setAutoDefault(false); // Enter means OK wherever the focus is
    connect(browse, &QPushButton::clicked, this, &ExportDialog::onBrowse);

    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(labelFor(m_editDir, tr("Export to:")), sideBySide(m_editDir, browse));
    form->addRow(labelFor(m_comBoxKo, tr("Export Core:")), m_comBoxKo);
    form->addRow(labelFor(m_editClk, tr("Clock signal:")), m_editClk);
    form->addRow(labelFor(m_spinPeriod, tr("Clock period:")),
                 sideBySide(m_spinPeriod, m_comBoxPeriod));
    form->addRow(labelFor(m_editName, tr("File name:")), m_editName);
    form->addRow(labelFor(m_comBoxFormat, tr("Format:")), m_comBoxFormat);
    form->addRow(m_labelType, m_comboBoxForPRN);
    form->addRow(QString(), m_checkFormulas); // where the type stands with another format

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(makeLine());
    layout->addLayout(form);
    layout->addWidget(m_listWidgetForBus, 1);
    layout->addStretch();
    addOkAndCancel(*this, *layout)->setObjectName(QStringLiteral("buttonBox"));
}

void ExportDialog::describeFormats()
{
    const auto tell = [this](ExportFormat format, const QString &text) {
        m_comBoxFormat->setItemData(int(format), plainTip(text), Qt::ToolTipRole);
    };
    tell(ExportFormat::VcdPlain,
         tr("For programs that know the standard alone: buses as vectors, the trigger as a wire"));
    tell(ExportFormat::CsvPlain, tr("One row of titles, then a row for each sample"));
    const auto obstacle = exportObstacle(ExportFormat::Fst);
    tell(ExportFormat::Fst, obstacle.value_or(tr("As the plain Value Change Dump, and smaller")));
    if (!obstacle)
        return;
    auto *items = qobject_cast<QStandardItemModel *>(m_comBoxFormat->model());
    Q_ASSERT(items);
    items->item(int(ExportFormat::Fst))->setEnabled(false);
}

void ExportDialog::connectSlots()
{
    connect(m_comBoxPeriod, &QComboBox::currentIndexChanged, this,
            &ExportDialog::updatePeriodRange);
    connect(m_comBoxFormat, &QComboBox::currentIndexChanged, this,
            &ExportDialog::updatePeriodRange);
    connect(m_comBoxKo, &QComboBox::currentIndexChanged, this, &ExportDialog::updateSampleClk);
    connect(m_comBoxKo, &QComboBox::currentIndexChanged, this, &ExportDialog::showKnownPeriod);
    connect(m_comBoxFormat, &QComboBox::currentIndexChanged, this, &ExportDialog::updateTypeForPRN);
    connect(m_comBoxFormat, &QComboBox::currentIndexChanged, this, &ExportDialog::updateFormulas);
    connect(m_comboBoxForPRN, &QComboBox::currentIndexChanged, this, &ExportDialog::updateViewList);
}

QString ExportDialog::run(const ExportSource &source, QWidget *parent)
{
    // On the heap: the parent may be gone when the dialog returns, and the dialog with it.
    const QPointer<ExportDialog> dialog = new ExportDialog(source, parent);
    dialog->exec();
    const QString outcome = dialog ? dialog->m_outcome : QString();
    delete dialog;
    return outcome;
}

void ExportDialog::onBrowse()
{
    const QPointer<ExportDialog> self(this);
    const QString directory =
        QFileDialog::getExistingDirectory(this, tr("Export To..."), m_defaultDirectory);
    if (!self || directory.isEmpty())
        return;
    m_editDir->setText(directory);
    m_editDir->setToolTip(plainTip(directory));
}

void ExportDialog::updatePeriodRange()
{
    const ExportSettings chosen = settings();
    const bool isDividedPicosecond =
        chosen.format == ExportFormat::Vcd && chosen.period.unit == QLatin1String("ps");
    m_spinPeriod->setMinimum(isDividedPicosecond ? 2 : 1);
}

void ExportDialog::updateSampleClk()
{
    m_editClk->setText(m_cores.value(m_comBoxKo->currentIndex()).sampleClock);
}

void ExportDialog::showKnownPeriod()
{
    const auto known = m_clockPeriods ? m_clockPeriods->ofCore(selectedCore()) : std::nullopt;
    if (!known)
        return;
    m_comBoxPeriod->setCurrentText(known->unit);
    m_spinPeriod->setValue(known->number);
}

void ExportDialog::updateTypeForPRN()
{
    const bool isPrn = settings().format == ExportFormat::Prn;
    m_labelType->setVisible(isPrn);
    m_comboBoxForPRN->setVisible(isPrn);
    updateViewList();
}

void ExportDialog::updateFormulas()
{
    m_checkFormulas->setVisible(settings().format == ExportFormat::CsvPlain);
    fixSize();
}

bool ExportDialog::asksForBuses() const
{
    const ExportSettings chosen = settings();
    return chosen.format == ExportFormat::Prn && chosen.prnContent == PrnContent::Buses;
}

void ExportDialog::updateViewList()
{
    const bool isAsked = asksForBuses();
    m_listWidgetForBus->setVisible(isAsked);
    if (isAsked) {
        m_listWidgetForBus->clear();
        const QList<WaveMonitorWidget *> monitors = monitorsToExport();
        if (!monitors.isEmpty())
            m_listWidgetForBus->addItems(readBusNames(monitors.first()->contents()));
        for (int i = 0; i < m_listWidgetForBus->count(); ++i)
            m_listWidgetForBus->item(i)->setCheckState(Qt::Checked);
    }
    fixSize();
}

/// To what shows now; the heading takes more lines of a larger font.
void ExportDialog::fixSize()
{
    QSize size = (asksForBuses() ? kSizeWithBuses : kPlainSize).expandedTo(minimumSizeHint());
    size.setHeight(std::max(size.height(), layout()->minimumHeightForWidth(size.width())));
    setFixedSize(size);
}

int ExportDialog::selectedCore() const
{
    return m_cores.value(m_comBoxKo->currentIndex()).index;
}

ExportSettings ExportDialog::settings() const
{
    ExportSettings chosen;
    chosen.format = ExportFormat(m_comBoxFormat->currentIndex());
    chosen.period = {m_spinPeriod->value(), m_comBoxPeriod->currentText()};
    if (m_checkFormulas->isChecked())
        chosen.formulas = Formulas::Disarmed;
    chosen.prnContent = PrnContent(m_comboBoxForPRN->currentIndex());
    for (int i = 0; i < m_listWidgetForBus->count(); ++i) {
        if (m_listWidgetForBus->item(i)->checkState() == Qt::Checked)
            chosen.buses.append(i);
    }
    return chosen;
}

/// A lite core has its trigger, as far as there is one, before the first sample.
ExportCore ExportDialog::coreToExport() const
{
    if (m_projectMode == ExportMode::Standard)
        return m_cores.value(m_comBoxKo->currentIndex());
    ExportCore core = m_cores.value(0);
    core.triggerSample = 0;
    return core;
}

QList<WaveMonitorWidget *> ExportDialog::monitorsToExport() const
{
    QList<WaveMonitorWidget *> monitors;
    std::copy_if(m_waveMonitors.begin(), m_waveMonitors.end(), std::back_inserter(monitors),
                 [](const auto &monitor) { return !monitor.isNull(); });
    if (m_projectMode == ExportMode::Lite)
        return monitors.mid(0, 1);
    monitors.removeIf([core = selectedCore()](const WaveMonitorWidget *monitor) {
        return monitor->coreNumber() != core;
    });
    return monitors;
}

void ExportDialog::accept()
{
    if (m_editName->text().isEmpty()) {
        showError(tr("File name can not be empty."));
        return;
    }
    const ExportSettings chosen = settings();
    if (asksForBuses() && chosen.buses.isEmpty() && !monitorsToExport().isEmpty()) {
        showError(tr("Selected bus can not be empty."));
        return;
    }
    // A field that was left as it first stood says nothing of the clock.
    const bool isTold = m_clockPeriods &&
                        (m_clockPeriods->ofCore(selectedCore()) || chosen.period != ClockPeriod());
    if (isTold)
        m_clockPeriods->set(selectedCore(), chosen.period);
    writeFiles(chosen);
    QDialog::accept();
}

/// Nobody is told of a failure in a box.
void ExportDialog::writeFiles(const ExportSettings &chosen)
{
    const WaitCursor cursor;
    const ExportCore core = coreToExport();
    QStringList failed;
    QStringList written;
    for (const WaveMonitorWidget *monitor : monitorsToExport()) {
        const QString suffix = exportSuffix(m_projectMode, chosen.format, monitor->coreNumber(),
                                            monitor->windowNumber());
        const QString path =
            exportPath(m_editDir->text(), m_editName->text() + suffix, chosen.format);
        QString reason;
        if (writeExport(path, chosen, core, monitor->contents(), &reason))
            written.append(path);
        else
            failed.append(tr("%1 can't be written: %2").arg(path, reason));
    }
    if (!written.isEmpty())
        failed.append(tr("Exported %1").arg(written.join(QStringLiteral(", "))));
    m_outcome = failed.join(QStringLiteral("; "));
}

/// Without a loop of its own: the dialog may go while the box shows.
void ExportDialog::showError(const QString &text)
{
    auto *box = new QMessageBox(QMessageBox::Critical, tr("Error"), text, QMessageBox::Ok, this);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace KEO
