// The watch of one file, with real files written in the ways that tools write them.

#include <base/filesetwatch.h>
#include <base/wholefile.h>
#include <support/files.h>
#include <support/testmain.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QUuid>

#include <cstdio>
#include <functional>

using namespace KEO;

namespace {

/// Takes the place of a file that has that name.
void renameOver(const QString &from, const QString &to)
{
    QVERIFY(::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0);
}

/// A file that is watched, and what is told of it.
struct Watched
{
    Watched() : path(directory.filePath("design.keo"))
    {
        putFile(path, "old");
        watch.watch(path);
    }

    QTemporaryDir directory;
    QString path;
    FileWatch watch;
    QSignalSpy spy{&watch, &FileWatch::fileChanged};
};

constexpr int kQuiet = 400; // ms in which a change would have been told
constexpr int kGone = 1500; // ms in which a removal would have been told

} // namespace

using Change = std::function<void(const QString &path)>;
Q_DECLARE_METATYPE(Change)

class tst_FileWatch : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void changes_data();
    void changes();
    void severalWithinASecond();
    void removedAndBack();
    void otherEvents();
    void severalFiles();
};

void tst_FileWatch::changes_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("in place", [](const QString &path) { putFile(path, "new"); });
    row("in place, same size", [](const QString &path) { putFile(path, "OLD"); });
    row("cut in place and written later", [](const QString &path) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QTest::qWait(300);
        QVERIFY(file.write("new") == 3);
    });
    for (const int ms : {0, 400}) {
        QTest::addRow("old file kept, new one after %d ms", ms)
            << Change([ms](const QString &path) {
                   renameOver(path, path + ".bak");
                   QTest::qWait(ms);
                   putFile(path, "new");
               });
        QTest::addRow("deleted and made again after %d ms", ms)
            << Change([ms](const QString &path) {
                   QVERIFY(QFile::remove(path));
                   QTest::qWait(ms);
                   putFile(path, "new");
               });
    }
    row("with its folder", [](const QString &path) {
        const QString folder = QFileInfo(path).path();
        QVERIFY(QDir(folder).removeRecursively());
        QTest::qWait(100);
        QVERIFY(QDir().mkpath(folder));
        putFile(path, "new");
    });
    // Neither raises an event of the file.
    for (const bool isLink : {false, true}) {
        QTest::newRow(isLink ? "folder by a switched link" : "folder by another one")
            << Change([isLink](const QString &path) {
                   const QString folder = QFileInfo(path).path();
                   const QString fresh = folder + QUuid::createUuid().toString(QUuid::Id128);
                   QVERIFY(QDir().mkpath(fresh));
                   putFile(fresh + u'/' + QFileInfo(path).fileName(), "old"); // as long as before
                   renameOver(folder, fresh + ".before");
                   if (isLink)
                       QVERIFY(QFile::link(fresh, folder));
                   else
                       renameOver(fresh, folder);
               });
    }
    row("by the program's own save",
        [](const QString &path) { QVERIFY(!writeWholeFile(path, "new", LineEnds::AsTheyAre)); });
}

// Each change is told while the file exists, and the watch lives on after it.
void tst_FileWatch::changes()
{
    QFETCH(Change, change);
    const QTemporaryDir directory;
    QVERIFY(QDir(directory.path()).mkdir("impl"));
    const QString path = directory.filePath("impl/design 100% \u00e4'.keo");
    putFile(path, "old");
    FileWatch watch;
    bool existed = true;
    connect(&watch, &FileWatch::fileChanged, this,
            [&](const QString &told) { existed &= told == path && QFile::exists(told); });
    QSignalSpy spy(&watch, &FileWatch::fileChanged);
    watch.watch(path);
    for (int round = 0; round < 2; ++round) {
        change(path);
        QTRY_VERIFY(!spy.isEmpty());
        QTest::qWait(kQuiet); // a slow write may be told twice
        spy.clear();
    }
    putFile(path, "again");
    QTRY_VERIFY(!spy.isEmpty());
    QVERIFY(existed);
}

void tst_FileWatch::severalWithinASecond()
{
    Watched file;
    QSignalSpy &spy = file.spy;
    const QString &path = file.path;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i) {
        if (i % 3 == 0)
            QVERIFY(QFile::remove(path));
        putFile(path, QByteArray::number(i));
        QTest::qWait(i % 2 ? 20 : 0);
    }
    QTRY_VERIFY(!spy.isEmpty());
    QTest::qWait(kQuiet);
    QVERIFY(spy.size() <= 2 + timer.elapsed() / 100); // not one for each event
    spy.clear();
    QTest::qWait(kQuiet);
    QCOMPARE(spy.size(), 0);
    putFile(path, "last");
    QTRY_COMPARE(spy.size(), 1);
}

void tst_FileWatch::removedAndBack()
{
    Watched file;
    QSignalSpy &spy = file.spy;
    const QString &path = file.path;
    QVERIFY(QFile::remove(path));
    QTest::qWait(400);
    QCOMPARE(spy.size(), 0); // it may be back any moment
    QTRY_COMPARE(spy.size(), 1);
    QTest::qWait(kGone);
    QCOMPARE(spy.size(), 1); // gone is told once
    putFile(path, "back");
    QTRY_COMPARE(spy.size(), 2);
    putFile(path, "written");
    QTRY_COMPARE(spy.size(), 3);
}

// What leaves the content alone is nobody's business, nor is a file that was watched before.
void tst_FileWatch::otherEvents()
{
    Watched file;
    QSignalSpy &spy = file.spy;
    {
        QFile old(file.path); // long ago, so that the time of the file tells versions apart
        QVERIFY(old.open(QIODevice::ReadWrite));
        QVERIFY(old.setFileTime(QDateTime::currentDateTime().addDays(-1),
                                QFileDevice::FileModificationTime));
    }
    file.watch.watch(file.path);
    QVERIFY(QFile::setPermissions(file.path, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(QFile(file.path).link(file.directory.filePath("link.keo")));
    const QString second = file.directory.filePath("second.keo");
    putFile(second, "new");
    QTest::qWait(kQuiet);
    QCOMPARE(spy.size(), 0);
    putFile(file.path, "new");
    QTRY_COMPARE(spy.size(), 1);

    QVERIFY(QFile::remove(second));
    file.watch.watch(second); // does not exist yet
    putFile(file.path, "newer");
    QTest::qWait(kQuiet);
    QCOMPARE(spy.size(), 1);
    putFile(second, "new");
    QTRY_COMPARE(spy.size(), 2);
    QCOMPARE(spy.last().first().toString(), second);
    putFile(second, "newer"); // not told any more, though seen
    file.watch.stop();
    putFile(second, "newest");
    QTest::qWait(kQuiet);
    QCOMPARE(spy.size(), 2);
}

/// Listeners may change the set while they are told.
void tst_FileWatch::severalFiles()
{
    QTemporaryDir directory;
    const QString a = directory.filePath("a.fs");
    const QString b = directory.filePath("b.fs");
    putFile(a, "1");
    putFile(b, "1");
    FileSetWatch watch;
    QStringList told;
    connect(&watch, &FileSetWatch::fileChanged, this, [&](const QString &path) {
        told.append(path);
        if (path == b)
            watch.setFiles({a});
    });
    watch.setFiles({a, b, a, {}, directory.filePath("missing.fs")});
    putFile(a, "22");
    QTRY_COMPARE(told, QStringList(a));
    putFile(b, "22");
    QTRY_COMPARE(told, QStringList({a, b}));
    putFile(b, "333");
    putFile(a, "333");
    QTRY_COMPARE(told, QStringList({a, b, a}));
}

KEO_TEST_MAIN(tst_FileWatch)
#include "tst_filewatch.moc"
