#pragma once

#include "benchserver.h"
#include "files.h"
#include "testdesign.h"

#include <project/waitingtip.h>

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <optional>

constexpr int kCaptureTime = 20000; // ms, many times what a capture here takes

/// A design with the files of it, and the simulated server that has it on its first cable.
struct Bench
{
    explicit Bench(const TestDesign &board) : design(board)
    {
        design.logs = true;
        design.write(directory.path());
        qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());
        server.emplace();
    }

    QString file() const { return directory.filePath("design." + design.extension); }
    /// How many requests of a kind the server has taken.
    qsizetype requests(const QByteArray &kind) const
    {
        const QList<QByteArray> lines = contentOf(directory.filePath("packets.log")).split('\n');
        return std::count_if(lines.begin(), lines.end(), [&](const QByteArray &line) {
            return line.contains(" > ") && line.contains(kind);
        });
    }

    TestDesign design;
    QTemporaryDir directory;
    std::optional<BenchServer> server;
};

/// The tip that shows, or null.
inline KEO::WaitingTip *waitingTip()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *tip = qobject_cast<KEO::WaitingTip *>(widget);
        if (tip && tip->isVisible())
            return tip;
    }
    return nullptr;
}
