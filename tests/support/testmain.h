#pragma once

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <initializer_list>

/// Base of all test classes: a warning that no test announced with QTest::ignoreMessage fails the
/// test function that provoked it.
class QuietTest : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".*"))); }
};

/// Adds rows to a data table, each cell as the type of its column: row("empty", {}, "", 0).
template <typename... Types>
struct RowAdder
{
    void operator()(const char *name, const Types &...cells) const
    {
        (QTest::newRow(name) << ... << cells);
    }
};

/// Columns of a data table, and what adds its rows:
/// const auto row = addColumns<QStringList, int>({"lines", "count"}).
template <typename... Types>
RowAdder<Types...> addColumns(std::initializer_list<const char *> names)
{
    const auto *name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
    return {};
}

/// A row of a data table: addRow("empty", "", 0).
template <typename... Cells>
void addRow(const char *name, const Cells &...cells)
{
    (QTest::newRow(name) << ... << cells);
}

/// Runs a test class with a socket and temporary directory of its own, so that tests run side by
/// side and never meet a server of another test. The path is short because a local socket's name
/// has to fit in about 100 bytes.
template <typename Test, typename Application>
int runTest(int argc, char **argv)
{
    QTemporaryDir sockets(QStringLiteral("/tmp/keo-XXXXXX"));
    if (!sockets.isValid()) {
        std::fputs("no temporary directory for the test's sockets\n", stderr);
        return 1;
    }
    qputenv("TMPDIR", sockets.path().toLocal8Bit());
    for (const char *home : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}) // not the user's own
        qputenv(home, sockets.path().toLocal8Bit());
    Application application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("keo-test"));
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// The main function of one test class, which gets the arguments after the name of the class.
using TestMain = int (*)(int argc, char **argv);

/// Lets the program run \a main when its first argument is the base name of \a file.
bool addTestMain(const char *file, TestMain main);

/// Gives the file's test class a main function of its own.
#define KEO_OWN_TEST_MAIN(main)                                                                    \
    [[maybe_unused]] static const bool s_hasTestMain = addTestMain(__FILE__, main);

/// The main function of a test class without widgets. End the file with `#include "tst_name.moc"`.
#define KEO_TEST_MAIN(Test) KEO_OWN_TEST_MAIN((runTest<Test, QCoreApplication>))
