// What is read from an fs file, how much memory that takes, and how a change of it is noticed.

#include <programmer/devicechain.h>
#include <programmer/devicedatabase.h>
#include <programmer/fsheader.h>
#include <support/testmain.h>

#include <QFile>
#include <QSignalSpy>

using namespace KEO;

class tst_FsFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void headers_data();
    void headers();
    void largeFileTakesLittleMemory();
};

namespace {

void write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("cannot write %s", qPrintable(path));
}

FsHeader headerOf(const QString &path)
{
    FsHeaderReader reader(path);
    while (!reader.read(0)) {
    }
    return reader.header();
}

/// Most memory that the process has had, in MB.
int peakMemory()
{
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ').first().toInt() / 1024;
    }
    return 0;
}

} // namespace

void tst_FsFile::headers_data()
{
    // fields: checksum, user code, ID code
    const auto row = addColumns<QByteArray, QString, FsVerdict>({"text", "fields", "verdict"});
    const FsVerdict fine = FsVerdict::Accepted;
    row("none", "0101\n1100\n", "||00000000", fine);
    row("empty file", {}, "||00000000", fine);
    row("all, at the end, without a line end",
        "0101\r\n//CheckSum:  0x12  34 \r\n// UserCode: 00:77\r\n01\r\n"
        "//Device-package: KR-C-Q48\r\n//KEOCRC: 4d2",
        "0x12 34|00:77|1100381B", fine);
    row("user code from the checksum", "//CheckSum:5A5A\n//UserCode: \n//CheckSum:6B6B\n",
        "6B6B|5A5A|00000000", fine);
    row("not at the start of a line", " //CheckSum: 1\n/ /CheckSum: 2\n/\n//\nCheckSum: 3\n",
        "||00000000", fine);
    row("package without a dash", "//Device-package: KX\n//CheckSum: 1\n", "1||00000000", fine);
    row("another device", "//CheckSum: 1\n//Device-package: KX-1-Q48\n", "||00000000",
        FsVerdict::WrongDevice);
    row("device of another series", "//Device-package: MR-1-Q48\n", "||00000000",
        FsVerdict::WrongDevice);
    row("another design", "//CheckSum: 1\n//KEOCRC: 4d3\n//Device-package: KX-1-Q48\n",
        "||00000000", FsVerdict::WrongDesign);
    row("no design named", "//KEOCRC:\n//CheckSum: 1\n", "1||00000000", fine);
    row("a line without end",
        QByteArray("//CheckSum: 1\n//UserCode: ") + QByteArray(1000000, 'x') + "\n//CheckSum: 2",
        "2|" + QString(FsHeaderParser::kMaxLine - 12, 'x') + "|00000000", fine);
}

void tst_FsFile::headers()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, fields);
    QFETCH(FsVerdict, verdict);
    const DeviceDatabase database = DeviceDatabase::fromJson(
        R"({"DEVICE_CONFIG": [{"DEVICE": "KR-C", "IDCODE": "0x1100381B"}, {"DEVICE": "MR-1"}],
            "ALL_SERIES": [{"SERIES": "KR", "DEVICES": ["KR-C"]},
                           {"SERIES": "MR", "DEVICES": ["MR-1"]}]})");
    QTemporaryDir directory;
    DeviceRow row;
    row.series = "KR";
    row.device = "KR-C";
    row.fsFile = directory.filePath("a.fs");
    row.checksum = "old";
    write(row.fsFile, text);
    QCOMPARE(applyFsHeader(headerOf(row.fsFile), database, "4d2", row), verdict);
    QCOMPARE(row.checksum + '|' + row.userCode + '|' + row.idCode, fields);
    QCOMPARE(row.fsFile.isEmpty(), verdict != FsVerdict::Accepted);
}

void tst_FsFile::largeFileTakesLittleMemory()
{
    constexpr int kMegabytes = 200;
    QTemporaryDir directory;
    const QString path = directory.filePath("large.fs");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("//Device-package: KR-C-Q48\n");
    const QByteArray lines = (QByteArray(1023, '0') + '\n').repeated(1024);
    for (int i = 0; i < kMegabytes - 1; ++i)
        file.write(lines);
    file.write(QByteArray(1024 * 1024, '1')); // one line without an end
    file.write("\n//CheckSum: 77\n");
    file.close();
    QVERIFY(file.size() > qint64(kMegabytes) << 20);

    const int before = peakMemory();
    const FsHeader header = headerOf(path);
    QCOMPARE(header.checksum, "77");
    QCOMPARE(header.claims.size(), 1);
    QVERIFY2(before > 0 && peakMemory() - before < 100, qPrintable(QString::number(peakMemory())));
}

KEO_TEST_MAIN(tst_FsFile)
#include "tst_fsfile.moc"
