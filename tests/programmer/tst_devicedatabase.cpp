// The device database, from a good file to the worst.

#include <programmer/devicechain.h>
#include <programmer/devicedatabase.h>
#include <support/testmain.h>

#include <QFile>
#include <QLoggingCategory>

using namespace KEO;

class tst_DeviceDatabase : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void readsInFileOrderAndSkipsDanglingNames();
    void wrongShapes_data();
    void wrongShapes();
    void unreadableFiles();
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
            { "OPERATION": "Write", "CMD_INDEX": 5, "OPTIONS": ["Programming"] } ] }
    ],
    "DEVICE_CONFIG": [
        { "DEVICE": "Z", "IDCODE": "0x1100AB1B", "ACCESS_MODES": ["Flash", "nowhere", "SRAM"] },
        { "DEVICE": "A", "IDCODE": "1100ab1b", "ACCESS_MODES": ["SRAM"] },
        { "DEVICE": "bare" }
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

void tst_DeviceDatabase::readsInFileOrderAndSkipsDanglingNames()
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
    QVERIFY(!database.operation(*a, "Flash", "Write"));
    QVERIFY(!database.device("bare")->defaultOperation());
    QCOMPARE(database.devicesWithIdCode("1100AB1B"), (QList<const DeviceEntry *>{z, a}));
    QVERIFY(database.devicesWithIdCode({}).isEmpty());
}

void tst_DeviceDatabase::wrongShapes_data()
{
    const auto row = addColumns<QByteArray, QStringList>({"json", "series"});
    row("empty", {}, {});
    row("no JSON", "<a/>", {});
    row("cut off", kGood.left(kGood.size() / 2), {});
    row("too deep", QByteArray(100000, '['), {});
    row("a list", "[]", {});
    row("no lists", R"({"ALL_MODES": 1, "DEVICE_CONFIG": {}, "ALL_SERIES": "S"})", {});
    row("entries are no objects",
        R"({"ALL_MODES": [[]], "DEVICE_CONFIG": [null, 1], "ALL_SERIES": ["S"]})", {});
    row("inner lists are none", R"({"ALL_MODES": [{"MODE": "M", "OPERATIONS": "x"}],
            "DEVICE_CONFIG": [{"DEVICE": "D", "ACCESS_MODES": 3}],
            "ALL_SERIES": [{"SERIES": "S", "DEVICES": {"D": 1}}]})",
        {"S"});
    row("texts are none",
        R"({"ALL_MODES": [{"MODE": {}, "OPERATIONS": [{"OPTIONS": [[1], {}]}, 4]}],
            "DEVICE_CONFIG": [{"DEVICE": ["D"], "ACCESS_MODES": [{}, 0]}],
            "ALL_SERIES": [{"SERIES": 7, "DEVICES": [null, "D"]}]})",
        {"7"});
}

void tst_DeviceDatabase::wrongShapes()
{
    QFETCH(QByteArray, json);
    QFETCH(QStringList, series);
    DeviceDatabase database;
    QVERIFY(!logOf([&] { database = DeviceDatabase::fromJson(json); }).isEmpty());
    QCOMPARE(database.seriesNames(), series);
    QVERIFY(!database.device("D") || !database.device("D")->defaultOperation());
    // Whatever can be asked for has an answer.
    DeviceRow row = newDeviceRow(database);
    chooseSeries(row, database, 1);
    chooseDevice(row, database, 3);
    QCOMPARE(row.operation, nullptr);
}

void tst_DeviceDatabase::unreadableFiles()
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

KEO_TEST_MAIN(tst_DeviceDatabase)
#include "tst_devicedatabase.moc"
