#pragma once

#include <wave_data/aidrow.h>

#include <QWidget>

namespace WaveMonitor {

/// The names of rows beside those of the window, and what each is at the shown sample: 0, 1 or "?",
/// below a heading. Stands above the names of the window's rows, in the same columns.
class AidNames final : public QWidget
{
    Q_OBJECT

public:
    explicit AidNames(QWidget *parent = nullptr);

    void setRows(const AidRows &rows);
    /// The sample whose values stand beside the names, of \a samples.
    void setSample(qsizetype sample, qsizetype samples);
    /// Where the columns are, in pixels. A name may begin left of the widget.
    struct Columns
    {
        int name = 0;
        int value = 0;
        bool operator==(const Columns &other) const = default;
    };
    void setColumns(const Columns &columns);
    /// How far the rows are scrolled, in pixels.
    void setTop(int top);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QString valueOf(const AidRow &row) const;

    AidRows m_rows;
    qsizetype m_sample = 0;
    qsizetype m_samples = 0;
    Columns m_columns;
    int m_top = 0;
};

} // namespace WaveMonitor
