#pragma once

#include <project/analyzerproject.h>
#include <shell/projectmanager.h>

#include <QStringList>

#include <functional>
#include <utility>

/// What the fake projects of one test did, in order, and how they shall behave.
struct ProjectLog
{
    QStringList calls; ///< "standard: open /tmp/a.keo"
    bool busy = false;
    bool opens = true;
    std::function<void()> whileOpening; ///< as in a box that a file brings up

    QStringList take() { return std::exchange(calls, {}); }
};

/// A project that only writes down how it is driven. Refuses to close while busy, as projects do.
class FakeProject final : public KEO::AnalyzerProject
{
    Q_OBJECT

public:
    FakeProject(ProjectLog &log, QString name, QObject *parent)
        : AnalyzerProject(parent), m_log(log), m_name(std::move(name))
    {
    }

    [[nodiscard]] bool isBusy() const override { return m_log.busy; }
    void setupProject(QWidget *) override
    {
        const bool reachesAll = tabWidgetGetter && tabWidgetGetter() && toolBarGetter &&
                                toolBarGetter() && openActionGetter && openActionGetter();
        note(reachesAll ? "setup" : "setup without the window's parts");
    }
    bool closeProject(QWidget *, const std::function<bool()> &askStop) override
    {
        if (m_log.busy && !(askStop && askStop())) {
            note("close refused");
            return false;
        }
        m_log.busy = false;
        tabWidgetGetter = {};
        toolBarGetter = {};
        openActionGetter = {};
        note("close");
        return true;
    }
    bool openFile(const QString &path) override
    {
        note("open " + path);
        const bool opens = m_log.opens;
        if (m_log.whileOpening)
            m_log.whileOpening(); // may end this project
        return opens;
    }
    void setDevice(const QString &family, const QString &device, const QString &fsFile) override
    {
        note("device " + QStringList{family, device, fsFile}.join('/'));
    }

private:
    void note(const QString &what) { m_log.calls.append(m_name + ": " + what); }

    ProjectLog &m_log;
    QString m_name;
};

inline KEO::ProjectFactories fakeProjects(ProjectLog &log)
{
    const auto make = [&log](const QString &name) {
        return [&log, name](QObject *parent) -> std::unique_ptr<KEO::AnalyzerProject> {
            return std::make_unique<FakeProject>(log, name, parent);
        };
    };
    return {{KEO::ProjectKind::Standard, make("standard")}, {KEO::ProjectKind::Lite, make("lite")}};
}
