#pragma once

#include <QWidget>

class QGridLayout;
class QTabWidget;

namespace KEO {

/// What to do next, in the middle of a tab widget without tabs; gone while there is one. Lies over
/// the tab widget as its child and takes no clicks and no focus.
class EmptyHint final : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyHint(QTabWidget *tabs);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void addKey(QGridLayout *keys, const QString &key, const QString &meaning);
    void mute();
    void follow();

    QTabWidget *m_tabs; // its parent
};

} // namespace KEO
