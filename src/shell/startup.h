#pragma once

#include "projectmanager.h"
#include "startupoptions.h"

#include <servers/exampledesign.h>
#include <servers/serverlauncher.h>

#include <QCoreApplication>
#include <QList>
#include <QString>

#include <optional>

namespace KEO {

class Analyzer;

/// What the tool flow learns from the end of the program; otherwise the event loop's own result.
enum class StartupStatus : int {
    NoDevice = 1,     ///< the command line names no family or no device, and no `-open`
    NoServer = 1,     ///< none of the cable servers could be started
    NoConnection = 2, ///< none of those that started answered
    NoTranscript = 3  ///< the file of `-transcript` can't be written
};

/// The course of the desktop program from the command line to its exit code: starts the cable
/// servers, connects to them, shows the main window, opens the file of the command line, runs the
/// event loop and ends the servers. Needs the application object; blocks while servers start (up to
/// 5 s each) and connect (about 2 s for each that does not answer), with a splash screen up.
class Startup final
{
    Q_DECLARE_TR_FUNCTIONS(KEO::Startup)

public:
    /// What runs and what may be opened; only tests name other than the default.
    struct Surroundings
    {
        QString serverDirectory = siblingDirectory();
        QList<ServerRow> servers = serverTable();
        ProjectFactories projects = projectFactories();
    };

    explicit Startup(const StartupOptions &options);
    Startup(StartupOptions options, Surroundings surroundings);

    /// Shows its errors in boxes. Ends when the last window has closed; the exit code of the
    /// program.
    [[nodiscard]] int run();

private:
    [[nodiscard]] int serve(Analyzer &window) const;
    void openByHand(Analyzer &window) const;
    [[nodiscard]] std::optional<ExampleDesign> exampleOn(const ServerProcesses &processes) const;

    StartupOptions m_options;
    Surroundings m_surroundings;
};

} // namespace KEO
