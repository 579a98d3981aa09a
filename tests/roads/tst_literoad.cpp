// The whole way of a user of a lite core through the main window, against a simulated board: open,
// capture at once or later, look, save and open again.

#include <design/projectfile.h>
#include <design/randomwindow.h>
#include <project/reloadbanner.h>
#include <support/desktop.h>
#include <support/files.h>

using namespace KEO;

class tst_LiteRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void fromCaptureToSessionAndBack();
};

namespace {

/// The one on the project's page, or null.
ReloadBanner *banner(const Desktop &d)
{
    for (ReloadBanner *candidate : d.window->findChildren<ReloadBanner *>()) {
        if (!candidate->isHidden())
            return candidate;
    }
    return nullptr;
}

} // namespace

void tst_LiteRoad::fromCaptureToSessionAndBack()
{
    const TestDesign design{.lite = true};
    Desktop d(design);
    d.open();
    d.capture();
    QVERIFY(isStimulus(d.wave(1), design, 0));

    // The user renames a signal and zooms; the next captures go on with it.
    QDomDocument document;
    QDomElement window = d.wave(1)->saveWindow(document);
    window.firstChildElement("Signals").firstChildElement("Signal").setAttribute("text", "top bit");
    d.wave(1)->loadWindow(window);
    for (const double zoom : {0.25, 0.5}) {
        d.wave(1)->setZoom(zoom);
        d.capture();
        QCOMPARE(d.wave(1)->zoomRate(), zoom);
    }
    QCOMPARE(d.wave(1)->signalMap()[0].text, "top bit");
    QVERIFY(isStimulus(d.wave(1), design, 2 * design.amount));

    const QString project = d.directory.filePath("run.analyzer_prj");
    const QString data = d.directory.filePath("run.xml");
    d.saveAs(d.directory.filePath("run"));
    const QByteArray description = contentOf(d.file());
    QVERIFY(description.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG>\n"
                                   "    <Version>3.0</Version>\n    <Mode>Lite</Mode>\n"
                                   "    <KoCore_Lite index=\"0\" sample_clock=\"clk\" "));
    QVERIFY(description.contains("<Signal text=\"top bit\">count[15]</Signal>"));
    QVERIFY(!description.contains("KEO_ID"));
    QVERIFY(contentOf(data).contains("\n    <Window index=\"0\">\n"));
    const auto paths = readProjectFile(project);
    QVERIFY(paths && *paths == (ProjectFile{d.file(), data}));

    // Our own save is a change on disk like any other.
    QTRY_VERIFY(banner(d));

    // Opened again, it shows the same under the number of the window.
    const QString saved = textOf(d.wave(1)->contents());
    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    QCOMPARE(textOf(d.wave(1)->contents()), saved);
    QVERIFY(!banner(d));

    // Its paths stand crosswise: what is saved now has the samples in the project file.
    d.wave(1)->setZoom(0.5);
    d.click("Save...");
    QVERIFY(contentOf(project).startsWith("<?xml") && contentOf(project).contains("<WaveData>"));
    const auto crossed = readProjectFile(data);
    QVERIFY(crossed && *crossed == (ProjectFile{d.file(), project}));

    // The name that the user knows still opens it, and the next save puts both files right.
    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    d.click("Save...");
    QVERIFY(contentOf(data).contains("<WaveData>"));
    const auto righted = readProjectFile(project);
    QVERIFY(righted && righted->dataFile == data);
    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    d.click("Save...");

    // A capture takes the place of the saved waves, and their arrangement.
    d.wave(1)->setZoom(0.5);
    d.capture();
    QCOMPARE(d.titles(), (QStringList{"Trigger", "core 0 window 0"}));
    QVERIFY(isStimulus(d.wave(1), design, 3 * design.amount));
    QCOMPARE(d.wave(1)->zoomRate(), 0.5);

    QVERIFY(d.boxes.seen.isEmpty());
}

KEO_WIDGET_TEST_MAIN(tst_LiteRoad)
#include "tst_literoad.moc"
