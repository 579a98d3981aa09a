#pragma once

#include <QWidget>

class QGridLayout;
class QLabel;
class QTabWidget;

namespace KEO {

/// What to do next, and why the file asked for is not open, in the middle of a tab widget without
/// tabs; gone while there is one. Lies over
/// the tab widget as its child and takes no clicks and no focus.
class EmptyHint final : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyHint(QTabWidget *tabs);

    /// Also tells why \a file is not open, until the next one is; nothing for an empty name.
    void setRefused(const QString &file, const QString &reason);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void addKey(QGridLayout *keys, const QString &key, const QString &meaning);
    void mute();
    void follow();

    QTabWidget *m_tabs; // its parent
    QLabel *m_refused;  // child
};

} // namespace KEO
