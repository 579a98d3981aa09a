#pragma once

#include <support/desktop.h>

#include <QClipboard>
#include <QTableView>

// The match units of the page, as the user sees and sets them.

/// The value of a unit as the page shows it.
inline QString unitText(const UserWindow &user, int unit)
{
    const QAbstractItemModel *model = user.find<QTableView>("tableUnit")->model();
    return model->index(unit, model->columnCount() - 1).data().toString();
}

/// Selects a unit on the page, which shows, and gives it the keyboard.
inline QTableView *goToUnit(const UserWindow &user, int unit)
{
    auto *units = user.find<QTableView>("tableUnit");
    units->selectRow(unit);
    user.activate();
    units->setFocus();
    return units;
}

inline void pasteIntoUnit(const UserWindow &user, int unit, const QString &value)
{
    QGuiApplication::clipboard()->setText(value);
    QTest::keySequence(goToUnit(user, unit), QKeySequence::Paste);
}
