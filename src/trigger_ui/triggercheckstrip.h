#pragma once

#include <capture/triggercheck.h>

#include <QListWidget>

namespace KEO {

/// What a trigger check has found, a line each: plain text behind a sign that tells its weight.
/// Takes no room while there is nothing to say, and that of a few lines at most; then it scrolls.
/// A line is chosen by a click, or with the arrow keys and Enter.
class TriggerCheckStrip final : public QListWidget
{
    Q_OBJECT

public:
    explicit TriggerCheckStrip(QWidget *parent = nullptr);

    /// Keeps the current line current if it is still told.
    void tell(const QList<TriggerFinding> &findings);
    /// Tells at the top, until the next refuse or tell, why something that was asked for was not
    /// done.
    void refuse(const TriggerFinding &finding);

Q_SIGNALS:
    /// The user wants to see what the line speaks of.
    void chosen(const KEO::TriggerFinding &finding);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void fill();
    void fitHeight();
    void choose(const QListWidgetItem *item);

    QList<TriggerFinding> m_findings;
    bool m_isRefusing = false; ///< the first of them is a refusal
};

} // namespace KEO
