#include <base/wholefile.h>

#include <support/testmain.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace KEO;

class tst_WholeFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_directory.isValid()); }
    void refusesToRead_data();
    void refusesToRead();
    void takesMemoryForTheFileAlone();
    void replacesFilesAlone();
    void lineEnds();
    void keepsTheOldFileWhenTheDiskIsFull();

private:
    QString path(const char *name) const { return m_directory.filePath(QLatin1String(name)); }
    QTemporaryDir m_directory;
};

void tst_WholeFile::refusesToRead_data()
{
    addColumns<QString, int>({"path", "kind"});
    addRow("missing", path("missing"), int(Error::File));
    addRow("directory", m_directory.path(), int(Error::File));
    QVERIFY(!writeWholeFile(path("large"), QByteArray(11, 'x'), LineEnds::AsTheyAre));
    addRow("too large", path("large"), int(Error::Limit));
    QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
    addRow("pipe", path("pipe"), int(Error::File));
    addRow("device", "/dev/zero", int(Error::File));
}

void tst_WholeFile::refusesToRead()
{
    QFETCH(QString, path);
    const Result<QByteArray> content = readWholeFile(path, 10, LineEnds::AsTheyAre);
    QVERIFY(!content);
    QTEST(int(content.error().kind), "kind");
    QVERIFY2(content.error().message.contains(path), qPrintable(content.error().message));
}

void tst_WholeFile::takesMemoryForTheFileAlone()
{
    QVERIFY(!writeWholeFile(path("small"), "x", LineEnds::AsTheyAre));
    const qint64 allowed = qint64(1) << 40; // more than there is
    const auto content = readWholeFile(path("small"), allowed, LineEnds::AsTheyAre);
    QVERIFY(content && *content == "x");
}

void tst_WholeFile::replacesFilesAlone()
{
    QCOMPARE(mkfifo(qPrintable(path("fifo")), 0600), 0);
    for (const QString &special : {path("fifo"), m_directory.path()}) {
        const auto error = writeWholeFile(special, "x", LineEnds::AsTheyAre);
        QVERIFY2(error && error->message.contains(special), qPrintable(special));
    }
    struct stat present = {};
    QVERIFY(stat(qPrintable(path("fifo")), &present) == 0 && S_ISFIFO(present.st_mode));
}

void tst_WholeFile::lineEnds()
{
    QVERIFY(!writeWholeFile(path("f"), "a\r\nb\n", LineEnds::AsTheyAre));
    QCOMPARE(*readWholeFile(path("f"), 10, LineEnds::AsTheyAre), QByteArray("a\r\nb\n"));
    QCOMPARE(*readWholeFile(path("f"), 10, LineEnds::Native), QByteArray("a\nb\n"));
}

// A limit on the file size stands for the full disk: write() takes the bytes, the flush fails.
void tst_WholeFile::keepsTheOldFileWhenTheDiskIsFull()
{
    QVERIFY(!writeWholeFile(path("kept"), "old", LineEnds::AsTheyAre));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit tight = before;
    tight.rlim_cur = 1000;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto small = writeWholeFile(path("kept"), QByteArray(2000, 'x'), LineEnds::AsTheyAre);
    const auto large = writeWholeFile(path("kept"), QByteArray(200'000, 'x'), LineEnds::AsTheyAre);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
    for (const auto &error : {small, large})
        QVERIFY2(error && error->message.endsWith(qt_error_string(EFBIG)), "the reason is told");
    QCOMPARE(*readWholeFile(path("kept"), 10, LineEnds::AsTheyAre), QByteArray("old"));
    QCOMPARE(QDir(m_directory.path()).entryList({QStringLiteral("kept*")}).size(), 1);
}

KEO_TEST_MAIN(tst_WholeFile)
#include "tst_wholefile.moc"
