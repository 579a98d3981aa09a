#pragma once

#include <config/coreconfig.h>

#include <QComboBox>
#include <QTest>

/// Gives a port \a bits signals: a bus, and a single signal "last" with the display text "Last".
inline void connectPort(KEO::TriggerPort &port, int bits)
{
    KEO::SignalEntry bus{"bus", {}, {}};
    for (int i = bits - 2; i >= 0; --i)
        bus.members.append({QStringLiteral("bus[%1]").arg(i), {}, {}});
    port.signals = {bus, {"last", "Last", {}}};
}

/// Walks through the list as a user at the keyboard does.
inline void chooseByKeys(QComboBox *box, const QString &text)
{
    const int wanted = box->findText(text);
    QVERIFY(wanted >= 0);
    while (box->currentIndex() != wanted)
        QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
}
