// A project from the command line to the main window and back.

#include "desktop.h"

#include <QBitArray>

/// The capture program saves, the window opens and saves, the capture program exports.
class tst_ProjectRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void thereAndBack();
};

namespace {

QString runCapture(const Desktop &d, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(d.directory.path());
    process.start(QStringLiteral(KEO_BIN_DIR "/signalscope-capture"), arguments);
    if (!process.waitForFinished(60000))
        return QStringLiteral("does not end");
    return process.exitCode() == 0 ? QString() : QString::fromUtf8(process.readAllStandardError());
}

} // namespace

void tst_ProjectRoad::thereAndBack()
{
    TestDesign design;
    design.windows = 2;
    Desktop d(design);
    QCOMPARE(runCapture(d, {"--device", design.device, "--save", "p.analyzer_prj", "design.keo"}),
             QString());

    const QString project = d.directory.filePath("p.analyzer_prj");
    d.window->openFile(project, {}, design.device, {});
    QCOMPARE(d.boxes.seen, QStringList());
    QCOMPARE(d.tabs()->count(), 3);
    qint64 earliest = 0; // sample at which the window may begin
    for (int window = 0; window < 2; ++window) {
        QCOMPARE(d.tabs()->tabText(window + 1), QStringLiteral("core 0 Window %1").arg(window));
        const auto elements = d.wave(window + 1)->signalMap();
        const qint64 trigger = design.firstTrigger(earliest + design.position);
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            QBitArray expected(design.amount);
            for (int sample = 0; sample < design.amount; ++sample)
                expected[sample] = design.level(signal, trigger - design.position + sample);
            QCOMPARE(elements[signal].data, expected);
            QCOMPARE(elements[signal].name, design.name(signal));
        }
        earliest = trigger - design.position + design.amount;
    }
    const QByteArray before = [&] {
        QFile file(d.directory.filePath("p.xml"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    d.click("Save...");
    QFile after(d.directory.filePath("p.xml"));
    QVERIFY(after.open(QIODevice::ReadOnly));
    QCOMPARE(after.readAll(), before);

    QCOMPARE(runCapture(d, {"--open", "p.analyzer_prj", "--format", "csv"}), QString());
    QFile csv(d.directory.filePath("p_core0_window1.csv"));
    QVERIFY(csv.open(QIODevice::ReadOnly));
    const QString last = QString::fromUtf8(csv.readAll()).trimmed().section(u'\n', -1);
    QCOMPARE(last.section(", ", 1, 1).toInt(nullptr, 16), int(earliest - 1));
    QCOMPARE(d.boxes.seen, QStringList());
}

KEO_WIDGET_TEST_MAIN(tst_ProjectRoad)
#include "tst_projectroad.moc"
