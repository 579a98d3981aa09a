#pragma once

#include "files.h"
#include "testdesign.h"

#include <QTest>

/// Does a CSV file hold the samples from \a first on, each signal behind the bus? The first row may
/// be said to show another sample, \a shownFirst.
inline void compareExport(const QString &path, const TestDesign &design, qint64 first,
                          qint64 shownFirst)
{
    const QByteArray text = contentOf(path);
    const QByteArrayList lines = text.mid(text.indexOf("\nData:\n")).trimmed().split('\n').mid(1);
    QCOMPARE(lines.size(), 2 + design.amount); // names, and a row before the first sample
    const QByteArrayList names = lines.first().split(',');
    for (int signal = 0; signal < design.signalCount(); ++signal)
        QCOMPARE(QString::fromUtf8(names.at(2 + signal).trimmed()), design.name(signal));
    for (int row = 0; row < design.amount; ++row) {
        const qint64 sample = row == 0 ? shownFirst : first + row;
        const QByteArrayList cells = lines.at(2 + row).split(',');
        QCOMPARE(cells.at(1).trimmed().toInt(nullptr, 16), int(sample % TestDesign::kLength));
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            const char level = design.level(signal, sample) ? '1' : '0';
            QVERIFY2(cells.at(2 + signal).trimmed() == QByteArray(1, level),
                     qPrintable(QStringLiteral("%1, %2, sample %3")
                                    .arg(path, design.name(signal), QString::number(row))));
        }
    }
}

inline void compareExport(const QString &path, const TestDesign &design, qint64 first)
{
    compareExport(path, design, first, first);
}
