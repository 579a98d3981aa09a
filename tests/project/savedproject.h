#pragma once

#include <design/datafilewriter.h>
#include <design/projectfile.h>
#include <design/randomwindow.h>
#include <support/desktop.h>
#include <support/files.h>

/// A random arrangement of the signals of a design.
inline WaveMonitor::WindowContents arrangement(const TestDesign &design, quint32 seed)
{
    QStringList names;
    for (int i = 0; i < design.signalCount(); ++i)
        names.append(design.name(i));
    QRandomGenerator random(seed);
    WaveMonitor::WindowContents contents;
    arrangeRandomly(contents, random, names, design.amount);
    contents.setTriggerPosition(design.lite ? 0 : design.position);
    return contents;
}

/// A saved project of one window in a folder of its own, made without the program's windows.
struct ProjectOnDisk
{
    explicit ProjectOnDisk(bool lite = false)
    {
        design.lite = lite;
        design.write(directory.path());
        const WaveMonitor::WindowContents contents = arrangement(design, 1);
        const KEO::WindowToSave window{lite ? std::optional<int>() : 0, 0, &contents};
        if (KEO::writeDataFile(data(), {window}) ||
            KEO::writeProjectFile(project(), {keo(), data()}))
            qFatal("no project");
    }
    [[nodiscard]] QString keo() const { return directory.filePath("design.keo"); }
    [[nodiscard]] QString data() const { return directory.filePath("saved.xml"); }
    [[nodiscard]] QString project() const { return directory.filePath("saved.analyzer_prj"); }
    [[nodiscard]] QByteArrayList files() const
    {
        return {contentOf(keo()), contentOf(data()), contentOf(project())};
    }

    TestDesign design;
    QTemporaryDir directory;
};

/// The main window with a file open.
struct ProjectInWindow : UserWindow
{
    explicit ProjectInWindow(const QString &path) { window->openFile(path, {}, {}, {}); }
    void save() const { press(Qt::Key_S, Qt::ControlModifier); }
};
