#include <shell/startupoptions.h>
#include <support/testmain.h>

using namespace KEO;

Q_DECLARE_METATYPE(StartupOptions)

class tst_StartupOptions : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void options_data();
    void options();
};

void tst_StartupOptions::options_data()
{
    const auto row = addColumns<QString, StartupOptions, bool>({"line", "expected", "debug"});

    row("everything, in any order", "-fs d.fs -device KR-C -keo a.keo -family KR -dir /waves",
        {"a.keo", "/waves", "KR", "KR-C", "d.fs"}, false);
    row("the last mention counts", "-keo a.keo -keo b.keo", {"b.keo", "", "", "", ""}, false);
    row("nothing behind the last", "-device KR-C -family", {"", "", "", "KR-C", ""}, false);
    row("no value swallows nothing", "-keo -family KR", {"-family", "", "KR", "", ""}, false);
    row("debug as a value", "-keo -debug", {"-debug", "", "", "", ""}, true);
    row("debug in other spellings", "-Debug --debug", {}, false);
    row("unknown words are passed over", "x -Keo a.keo -FS b --family KR -debug -device KR-C y",
        {"", "", "", "KR-C", ""}, true);
}

void tst_StartupOptions::options()
{
    QFETCH(QString, line);
    // The program's name never counts, whatever it is.
    const QStringList words = QStringList{"-keo"} + line.split(' ', Qt::SkipEmptyParts);
    QTEST(parseStartupOptions(words), "expected");
    QTEST(wantsDebugMessages(words), "debug");
}

KEO_TEST_MAIN(tst_StartupOptions)
#include "tst_startupoptions.moc"
