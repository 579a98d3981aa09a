#pragma once

#include <export/exportfiles.h>

#include <QDialog>
#include <QList>
#include <QPointer>
#include <QString>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QSpinBox;

namespace WaveMonitor {
class ClockPeriods;
class WaveMonitorWidget;
} // namespace WaveMonitor

namespace KEO {

/// What there is to export.
struct ExportSource
{
    ExportMode mode = ExportMode::Standard;
    QString directory;                                      ///< where the user begins
    QList<ExportCore> cores;                                ///< to choose from
    QList<WaveMonitor::WaveMonitorWidget *> waveMonitors{}; ///< borrowed, one a core and window
    WaveMonitor::ClockPeriods *clockPeriods = nullptr; ///< borrowed, may be null: what is known
};

/// Asks for the files to export and writes them on OK: one for each wave monitor of the chosen
/// core, or the first wave monitor of a lite core. Files are replaced without a question. A file
/// that can't be written stays as it was; the reason is in the debug log and in what run() gives.
///
/// The samples are read from the monitors as they show them; nothing is copied.
class ExportDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit ExportDialog(const ExportSource &source, QWidget *parent = nullptr);

    /// Shows the dialog and returns when the user is through with it. Gives what became of the
    /// files, in words for the user; empty if none was to be written.
    static QString run(const ExportSource &source, QWidget *parent);

public Q_SLOTS:
    /// Writes the files, or says what is missing and stays.
    void accept() override;

private:
    void buildForm();
    /// Tool tips of the formats that need one; what can't be written here can't be chosen.
    void describeFormats();
    void connectSlots();
    void onBrowse();
    /// A clock in a VCD changes in the middle of its period, which takes two picoseconds.
    void updatePeriodRange();
    void updateSampleClk();
    /// Shows the period of the chosen core's clock if the user has told it before.
    void showKnownPeriod();
    void updateTypeForPRN();
    void updateFormulas();
    void fixSize();
    /// Fills the list of buses where it is asked for. A change of the core alone leaves the list.
    void updateViewList();

    [[nodiscard]] bool asksForBuses() const;
    [[nodiscard]] int selectedCore() const; ///< its index, -1 for none
    [[nodiscard]] ExportSettings settings() const;
    [[nodiscard]] ExportCore coreToExport() const;
    [[nodiscard]] QList<WaveMonitor::WaveMonitorWidget *> monitorsToExport() const;
    void writeFiles(const ExportSettings &settings);
    void showError(const QString &text);

    QLineEdit *m_editDir;
    QComboBox *m_comBoxKo;
    QLineEdit *m_editClk;
    QSpinBox *m_spinPeriod;
    QComboBox *m_comBoxPeriod;
    QLineEdit *m_editName;
    QComboBox *m_comBoxFormat;
    QLabel *m_labelType;
    QComboBox *m_comboBoxForPRN;
    QCheckBox *m_checkFormulas;
    QListWidget *m_listWidgetForBus;

    const QString m_defaultDirectory; ///< where the directory dialog starts
    const ExportMode m_projectMode;
    const QList<ExportCore> m_cores; ///< in the order of m_comBoxKo
    QList<QPointer<WaveMonitor::WaveMonitorWidget>> m_waveMonitors;
    QPointer<WaveMonitor::ClockPeriods> m_clockPeriods;
    QString m_outcome; ///< see run
};

} // namespace KEO
