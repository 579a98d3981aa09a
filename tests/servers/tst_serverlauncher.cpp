#include <servers/serverlauncher.h>
#include <support/testmain.h>

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace KEO;

/// Starting and ending servers, with a stand-in under the servers' names.
class tst_ServerLauncher : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void starts();
    void ends();
};

namespace {

/// A directory with stand-ins for the servers named.
class BurnerDir final
{
public:
    explicit BurnerDir(const QStringList &executables)
    {
        for (const QString &name : executables)
            QVERIFY(QFile::copy(STANDIN_SERVER, file(name)));
    }

    [[nodiscard]] QString path() const { return m_dir.path(); }

    [[nodiscard]] QString file(const QString &name) const
    {
        const QString suffix = QFileInfo(STANDIN_SERVER).suffix();
        return m_dir.filePath(suffix.isEmpty() ? name : name + '.' + suffix);
    }

    /// The arguments a stand-in was started with, once it runs.
    [[nodiscard]] QByteArray arguments(const QString &name) const
    {
        QFile args(file(name) + ".args");
        return args.open(QIODevice::ReadOnly) ? args.readAll() : QByteArray("not started");
    }

private:
    QTemporaryDir m_dir;
};

QStringList names(const QList<JtagConnection> &records)
{
    QStringList list;
    for (const JtagConnection &record : records)
        list.append(record.name);
    return list;
}

const QString kUsb = "Tarno USB Cable(FT2CH)";
const QString kLpt = "Parallel Port(LPT)";
const QString kLk7 = "LK7";

} // namespace

void tst_ServerLauncher::starts()
{
    const auto check = [](const QStringList &there, const QList<ServerRow> &asked,
                          const QStringList &cables) {
        const BurnerDir dir(there);
        QFile broken(dir.file("chainserver_lpt"));
        QVERIFY(broken.exists() || broken.open(QIODevice::WriteOnly)); // there, but no program
        ServerProcesses processes;
        QCOMPARE(names(launchServers(processes, dir.path(), asked)), cables);
        QCOMPARE(qsizetype(processes.size()), cables.size());
        for (const ServerRow &row : serverTable()) {
            const bool starts = cables.contains(row.connection.name);
            // Behind four megabytes of output, so that output does not block a server either.
            QTRY_COMPARE(dir.arguments(row.executable), starts ? "-local\n" : "not started");
            if (!starts)
                continue;
            QCOMPARE(processes.at(row.connection.name)->state(), QProcess::Running);
            QCOMPARE(processes.at(row.connection.name)->bytesAvailable(), 0);
        }
        killServers(processes);
        QVERIFY(processes.empty());
    };
    check({"chainserver", "chainserver_lk7"}, serverTable(), {kUsb, kLk7});
    check({}, serverTable(), {});
    check({"chainserver", "chainserver_lpt"}, {serverTable().at(1)}, {kLpt});
}

void tst_ServerLauncher::ends()
{
    const BurnerDir dir({"chainserver", "chainserver_lpt", "chainserver_lk7"});
    ServerProcesses processes;
    QCOMPARE(launchServers(processes, dir.path()).size(), 3);
    QTRY_COMPARE(dir.arguments("chainserver"), "-local\n");

    // The first one's pipe ends here and nowhere else, though others were started after it.
    QProcess &server = *processes.at(kUsb);
    QVERIFY(!server.waitForFinished(50));
    server.closeWriteChannel();
    QTRY_COMPARE(server.state(), QProcess::NotRunning);
    QCOMPARE(server.exitStatus(), QProcess::NormalExit);
    QCOMPARE(server.exitCode(), 7);

    QList<QProcess::ExitStatus> ends;
    for (const auto &[cable, process] : processes) {
        connect(process.get(), &QProcess::finished, this,
                [&](int, QProcess::ExitStatus status) { ends.append(status); });
    }
    stopServer(processes, kLpt);
    QCOMPARE(ends, QList{QProcess::CrashExit});
    QCOMPARE(processes.size(), 2u);
    QVERIFY(!processes.contains(kLpt));
    stopServer(processes, "no such cable");
    killServers(processes); // one has ended already
    QCOMPARE(ends, (QList{QProcess::CrashExit, QProcess::CrashExit}));
    QVERIFY(processes.empty());
}

KEO_TEST_MAIN(tst_ServerLauncher)
#include "tst_serverlauncher.moc"
