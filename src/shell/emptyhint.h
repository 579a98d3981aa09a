#pragma once

#include <QWidget>

class QGridLayout;
class QLabel;
class QPushButton;
class QScrollArea;
class QTabWidget;
class QVBoxLayout;

namespace KEO {

class ChoiceList;

/// What to do next, and why the file asked for is not open, in the middle of a tab widget without
/// tabs; gone while there is one. Offers the example, the captures that were never saved and the
/// files that were open last. Lies over the tab widget as its child, and scrolls where that is too
/// small.
class EmptyHint final : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyHint(QTabWidget *tabs);

    /// Also tells why \a file is not open, until the next one is; nothing for an empty name.
    void setRefused(const QString &file, const QString &reason);

    /// Offers the example from now on, whose copy goes into \a folder.
    void offerExample(const QString &folder);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// The user has chosen that project or description.
    void openRequested(const QString &path);
    /// The user wants to try the example.
    void exampleRequested();

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void addKey(QGridLayout *keys, const QString &key, const QString &meaning);
    /// A list under its title in \a layout.
    [[nodiscard]] ChoiceList *addList(QVBoxLayout *layout, const QString &title, const char *name);
    void fillLists();
    /// Scrolls the page to where the keys have led to.
    void showCurrent(const ChoiceList *list);
    void mute();
    void follow();

    QTabWidget *m_tabs;       // its parent
    QScrollArea *m_area;      // child
    QLabel *m_refused;        // child
    QWidget *m_example;       // child: the button and what it does
    QPushButton *m_try;       // child of it
    QLabel *m_tryText;        // the same
    ChoiceList *m_recoveries; // child
    ChoiceList *m_recent;     // child
};

} // namespace KEO
