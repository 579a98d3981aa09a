// The device database and what an fs file says of itself, from good files to the worst.

#include <programmer/devicechain.h>
#include <programmer/devicedatabase.h>
#include <programmer/fsheader.h>
#include <support/testmain.h>

#include <QFile>
#include <QLoggingCategory>

using namespace KEO;

class tst_ProgrammerFiles : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void readsInFileOrderAndSkipsDanglingNames();
    void unreadableFiles();
    void headers_data();
    void headers();
};

namespace {

const QByteArray kGood = R"({
    "ALL_MODES": [
        { "MODE": "SRAM", "OPERATIONS": [
            { "OPERATION": "Read", "CMD_INDEX": 1, "OPTIONS": ["Reading"] },
            { "OPERATION": "Write", "DESCRIPATION": "fast", "CMD_INDEX": "2",
              "OPTIONS": ["Programming"] },
            { "OPERATION": "Verify", "CMD_INDEX": 1e300, "OPTIONS": ["Checking", "Programming"] }
        ] },
        { "MODE": "Flash", "OPERATIONS": [
            { "OPERATION": "Write", "CMD_INDEX": 5, "OPTIONS": ["Programming"] },
            { "OPERATION": "Slow", "CMD_INDEX": 2.5 } ] }
    ],
    "DEVICE_CONFIG": [
        { "DEVICE": "Z", "IDCODE": "0x1100AB1B", "ACCESS_MODES": ["Flash", "nowhere", "SRAM"] },
        { "DEVICE": "A", "IDCODE": "1100ab1b", "ACCESS_MODES": ["SRAM"] },
        { "DEVICE": "bare" },
        { "DEVICE": "A", "IDCODE": "1" }
    ],
    "ALL_SERIES": [
        { "SERIES": "S2", "DEVICES": ["bare", "lost", "Z"] },
        { "SERIES": "S1", "DEVICES": ["A"] }
    ]
})";

QStringList s_log;

void keepLog(QtMsgType, const QMessageLogContext &, const QString &text)
{
    s_log.append(text);
}

/// Lines of the debug log that \a act brings about.
template <typename Act>
QStringList logOf(Act act)
{
    s_log.clear();
    QLoggingCategory::setFilterRules("signalscope.programmer.debug=true");
    const QtMessageHandler old = qInstallMessageHandler(keepLog);
    act();
    qInstallMessageHandler(old);
    QLoggingCategory::setFilterRules({});
    return s_log;
}

} // namespace

void tst_ProgrammerFiles::readsInFileOrderAndSkipsDanglingNames()
{
    DeviceDatabase database;
    const QStringList log = logOf([&] { database = DeviceDatabase::fromJson(kGood); });
    QCOMPARE(log.size(), 2);
    QVERIFY(log.at(0).contains("nowhere") && log.at(1).contains("lost"));
    QCOMPARE(database.seriesNames(), (QStringList{"S2", "S1"}));
    QCOMPARE(database.deviceNames("S2"), (QStringList{"bare", "Z"}));
    QCOMPARE(database.firstDeviceName(), "Z");
    const DeviceEntry *z = database.device("Z");
    QCOMPARE(z->modes.size(), 2);
    QCOMPARE(z->series->name, "S2");
    QCOMPARE(z->defaultOperation()->cmdIndex, 5);
    const DeviceEntry *a = database.device("A");
    QCOMPARE(a->defaultOperation()->name, "Write");
    QCOMPARE(a->defaultOperation()->cmdIndex, 2); // a number in quotes is one
    QCOMPARE(a->modes.first()->programmingOperations().size(), 2);
    QCOMPARE(database.operation(*z, "SRAM", "Verify")->cmdIndex, 0); // too large for a number
    QCOMPARE(database.operation(*z, "Flash", "Slow")->cmdIndex, 3);  // rounded
    QVERIFY(!database.operation(*a, "Flash", "Write"));
    QVERIFY(!database.device("bare")->defaultOperation());
    QCOMPARE(database.devicesWithIdCode("1100AB1B"), (QList<const DeviceEntry *>{z, a}));
    QVERIFY(database.devicesWithIdCode({}).isEmpty());
}

void tst_ProgrammerFiles::unreadableFiles()
{
    QTemporaryDir directory;
    QFile huge(directory.filePath("huge.json"));
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(DeviceDatabase::kMaxFileSize + 1));
    for (const QString &path : {directory.filePath("missing.json"), directory.path(),
                                huge.fileName(), QStringLiteral("/dev/zero")}) {
        const QStringList log =
            logOf([&] { QVERIFY(DeviceDatabase::fromFile(path).seriesNames().isEmpty()); });
        QVERIFY2(!log.isEmpty() && log.first().contains(path), qPrintable(path));
    }
}

void tst_ProgrammerFiles::headers_data()
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

void tst_ProgrammerFiles::headers()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, fields);
    QFETCH(FsVerdict, verdict);
    const DeviceDatabase database = DeviceDatabase::fromJson(
        R"({"DEVICE_CONFIG": [{"DEVICE": "KR-C", "IDCODE": "0x1100381B"}, {"DEVICE": "MR-1"}],
            "ALL_SERIES": [{"SERIES": "KR", "DEVICES": ["KR-C"]},
                           {"SERIES": "MR", "DEVICES": ["MR-1"]}]})");
    FsHeaderParser parser;
    parser.append(text);
    parser.finish();
    DeviceRow row;
    row.series = "KR";
    row.device = "KR-C";
    row.fsFile = "a.fs";
    row.checksum = "old";
    QCOMPARE(applyFsHeader(parser.header(), database, "4d2", row), verdict);
    QCOMPARE(row.checksum + '|' + row.userCode + '|' + row.idCode, fields);
    QCOMPARE(row.fsFile.isEmpty(), verdict != FsVerdict::Accepted);
}

KEO_TEST_MAIN(tst_ProgrammerFiles)
#include "tst_programmerfiles.moc"
