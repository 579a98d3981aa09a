#include "startup.h"

#include "analyzer.h"
#include "lastdevice.h"
#include "startupmarks.h"

#include <base/logging.h>
#include <widgets/messagebox.h>

#include <QApplication>
#include <QMessageBox>
#include <QPixmap>
#include <QPointer>
#include <QSplashScreen>

#include <utility>

namespace KEO {

namespace {

int fail(StartupStatus status, const QString &text)
{
    showBox(QMessageBox::Critical, nullptr, Startup::tr("Error"), text);
    return int(status);
}

/// Tells what comes next and shows it at once, since what comes next blocks.
void announce(QSplashScreen &splash, const QString &text)
{
    splash.showMessage(text, Qt::AlignBottom | Qt::AlignLeft, Qt::white);
    splash.repaint();
}

/// Connects the session to the servers; those that don't answer are ended.
bool connectServers(const QList<JtagConnection> &started, ServerProcesses &processes)
{
    JtagSession *const session = JtagSession::instance();
    const QList<JtagConnection> unreachable = session->connectServers(started);
    for (const JtagConnection &connection : unreachable)
        stopServer(processes, connection.name);
    return session->hasConnection();
}

Startup::Surroundings surroundingsFor(const StartupOptions &options)
{
    Startup::Surroundings surroundings;
    surroundings.projects = projectFactories({.sectionPause = options.sectionPause});
    return surroundings;
}

} // namespace

Startup::Startup(const StartupOptions &options) : Startup(options, surroundingsFor(options))
{
}

Startup::Startup(StartupOptions options, Surroundings surroundings)
    : m_options(std::move(options)), m_surroundings(std::move(surroundings))
{
}

int Startup::run()
{
    // The viewer tells of every row it makes, in the default category.
    const bool isDebugging = wantsDebugMessages(QCoreApplication::arguments());
    setLogOutput(isDebugging ? LogOutput::Debug : LogOutput::Warnings);
    const bool isFromHand = !m_options.openFile.isEmpty();
    const bool hasDevice = !m_options.device.isEmpty() && !m_options.family.isEmpty();
    if (!hasDevice && !isFromHand)
        return fail(StartupStatus::NoDevice, tr("Can not set device."));
    if (hasDevice)
        rememberDevice({m_options.family, m_options.device});

    if (!m_options.transcript.isEmpty()) {
        const auto error = JtagSession::instance()->startTranscript(m_options.transcript);
        if (error)
            return fail(StartupStatus::NoTranscript, error->message);
    }

    // The splash screen goes before any box: it could lie on top of it.
    QSplashScreen splash(QPixmap(QStringLiteral(":/keo/image/Tarno_LOGO_blue.png")));
    splash.show();
    announce(splash, tr("starting JTAG server..."));
    markStartup("splash screen shown");
    ServerProcesses processes;
    const QList<JtagConnection> started =
        launchServers(processes, m_surroundings.serverDirectory, m_surroundings.servers);
    if (processes.empty()) {
        splash.close();
        return fail(StartupStatus::NoServer, tr("Can not launch JTAG server."));
    }
    markStartup("servers launched");
    announce(splash, tr("connecting JTAG server..."));
    if (!connectServers(started, processes)) {
        splash.close();
        return fail(StartupStatus::NoConnection, tr("Can not connect to JTAG server."));
    }
    markStartup("servers connected");

    Analyzer window(nullptr, m_surroundings.projects);
    window.setStartDir(m_options.startDir);
    if (const std::optional<ExampleDesign> example = exampleOn(processes))
        window.offerExample(*example);
    markStartup("window made");
    window.showMaximized();
    splash.close();
    markStartup("window shown");
    const int result = serve(window);
    killServers(processes);
    return result;
}

/// The example, if its server is ours: one that found its name taken has left it to a stranger.
std::optional<ExampleDesign> Startup::exampleOn(const ServerProcesses &processes) const
{
    const auto server = processes.find(m_surroundings.servers.value(0).connection.name);
    if (server == processes.end() || server->second->waitForFinished(0))
        return {};
    return exampleDesign(m_surroundings.serverDirectory);
}

int Startup::serve(Analyzer &window) const
{
    if (!m_options.keoFile.isEmpty())
        window.openFile(m_options.keoFile, m_options.family, m_options.device, m_options.fsFile);
    else if (!m_options.openFile.isEmpty())
        openByHand(window);
    markStartup("file opened");
    markFirstPaint(window);
    // Opening may show boxes, and the system may have closed the window behind one: then the event
    // loop would never end.
    return window.isVisible() ? QApplication::exec() : 0;
}

/// A file manager knows no device: with neither named, the last one is most likely the one meant.
void Startup::openByHand(Analyzer &window) const
{
    const bool namesNone = m_options.family.isEmpty() && m_options.device.isEmpty();
    const NamedDevice device =
        namesNone ? lastDevice() : NamedDevice{m_options.family, m_options.device};
    const QPointer<Analyzer> self(&window); // opening may show boxes, see serve
    window.openFile(m_options.openFile, device.family, device.device, m_options.fsFile);
    if (!namesNone || !self)
        return;
    window.tell(device.device.isEmpty()
                    ? tr("No device is set: name it with -family and -device if it matters.")
                    : tr("Taken for the device of the last start, %1.").arg(device.device));
}

} // namespace KEO
