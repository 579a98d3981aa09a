#pragma once

#include "sidewindow.h"

#include <capture/diagnosistext.h>

#include <QList>
#include <QStringList>

class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;

namespace KEO {

/// Why a core did not trigger, a line each, beside the window: leads to the sample or the setting
/// that a line speaks of, by a double click, Enter or its two buttons.
class WhyPanel final : public SideWindow
{
    Q_OBJECT

public:
    explicit WhyPanel(QWidget *parent);

    /// Captures to choose from, by their titles, without a chosen() of its own.
    void setCaptures(const QStringList &titles, int current);
    /// Keeps the current line current if it is still told. Samples can be shown only with
    /// \a hasWaves.
    void tell(const QList<DiagnosisLine> &lines, bool hasWaves);

Q_SIGNALS:
    void chosen(int capture);
    void sampleAsked(qsizetype sample);
    void settingAsked(const KEO::TriggerFinding &finding);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    [[nodiscard]] const DiagnosisLine *currentLine() const;
    void updateButtons();
    void follow();
    void showSample();
    void showSetting();

    QLabel *m_about; // these are owned by the object tree
    QComboBox *m_captures;
    QListWidget *m_list;
    QPushButton *m_sample;
    QPushButton *m_setting;
    QList<DiagnosisLine> m_lines;
    bool m_hasWaves = false;
};

} // namespace KEO
