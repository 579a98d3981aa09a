// Rows that somebody lays beside those of a window.

#include "viewertest.h"

#include <wave/aid/aidnames.h>
#include <wave/aid/aidtracks.h>
#include <wave/common/timesliderdata.h>
#include <wave/compare/comparedpage.h>
#include <wave/view/waveview.h>
#include <wave_data/aidrow.h>
#include <wave_data/windowcontents.h>

#include <QDomDocument>
#include <QFontMetrics>
#include <QImage>
#include <QLabel>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QScrollBar>

#include <cmath>

using namespace WaveMonitor;

namespace {

constexpr int kSamples = 3000;

/// A row as a text of a character a sample: "0", "1" or "?".
AidRow rowOf(const QString &text)
{
    AidRow row{QStringLiteral("row"), {}, std::vector<quint64>(size_t(text.size() + 63) / 64), {}};
    row.holds = row.known;
    for (qsizetype k = 0; k < text.size(); ++k) {
        const quint64 bit = quint64(1) << k % 64;
        if (text[k] != u'?')
            row.known[size_t(k / 64)] |= bit;
        if (text[k] == u'1')
            row.holds[size_t(k / 64)] |= bit;
    }
    return row;
}

/// Stretches of random length.
QString randomText(int samples, quint32 seed)
{
    QRandomGenerator random(seed);
    QString text;
    while (text.size() < samples)
        text += QString(random.bounded(1, 90), u"01?"[random.bounded(3)]);
    return text.left(samples);
}

/// A viewer with a row that begins with hits, and others below it.
struct Aided final : Viewer
{
    explicit Aided(int others = 3) : Viewer(QStringLiteral("a b c(d e f) g"), kSamples)
    {
        rows.title = QStringLiteral("Rehearsal");
        rows.hitRow = 0;
        for (int k = 0; k <= others; ++k) {
            texts.append(randomText(kSamples, quint32(k + 1)));
            rows.rows.append(rowOf(texts.last()));
            rows.rows.last().name =
                k == 0 ? QStringLiteral("Trigger") : QStringLiteral("M%1").arg(k);
        }
        widget->showAidRows(rows);
        widget->activateWindow();
        [[maybe_unused]] const bool isActive = QTest::qWaitForWindowActive(widget.get());
        settle();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(widget->focusWidget(), key, modifiers);
        settle();
    }
    QString said() const { return widget->findChild<QLabel *>("aidText")->text(); }
    template <typename Part>
    Part *part() const
    {
        return widget->findChild<Part *>();
    }

    AidRows rows;
    QStringList texts;
};

/// What a pixel of a trace is in the middle of a sample's columns, as the text has it.
QChar shownAt(const QImage &image, int row, qreal x)
{
    const auto at = [&](int y) {
        return image.pixelColor(int(x), row * 20 + y) != QColor(Qt::black);
    };
    if (at(4) && !at(14))
        return u'1';
    return at(14) && !at(4) ? u'0' : u'?';
}

} // namespace

class tst_AidPane : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void columnsAndBeginnings();
    void followsTheWaves();
    void goesFromHitToHit();
    void worksInAComparedPage();
    void leavesRoomForTheWaves();
};

/// Against a model that looks at each sample by itself.
void tst_AidPane::columnsAndBeginnings()
{
    QRandomGenerator random(3);
    for (int round = 0; round < 300; ++round) {
        const int samples = random.bounded(1, 400);
        const QString text = randomText(samples, quint32(round));
        const AidRow row = rowOf(text);
        const qreal pitch = std::pow(2.0, random.bounded(-4, 6)) * 0.78125;
        const qreal left = random.bounded(-300, 60);
        const int width = 200;
        std::vector<AidColumn> wanted(width);
        for (int k = 0; k < samples; ++k) {
            // From the column that its beginning falls into to that of its end.
            const int first = std::max(0, int(std::ceil(left + k * pitch - 0.5)));
            const int last = std::min(width - 1, int(std::floor(left + (k + 1) * pitch + 0.5)));
            for (int column = first; column <= last; ++column) {
                const qreal x = column - left;
                if ((x + 0.5) / pitch <= k || (x - 0.5) / pitch >= k + 1)
                    continue;
                wanted[size_t(column)].isUnknown |= text[k] == u'?';
                wanted[size_t(column)].fails |= text[k] == u'0';
                wanted[size_t(column)].holds |= text[k] == u'1';
            }
        }
        QCOMPARE(aidColumns(row, samples, left, pitch, width), wanted);
        QList<qsizetype> beginnings;
        for (int k = 0; k < samples; ++k) {
            QCOMPARE(aidLevel(row, k) == AidLevel::Holds, text[k] == u'1');
            if (text[k] == u'1' && (k == 0 || text[k - 1] != u'1'))
                beginnings.append(k);
        }
        const SampleHits hits(aidBeginnings(row));
        QCOMPARE(hits.count(), beginnings.size());
        qsizetype at = -1;
        for (const qsizetype beginning : beginnings) {
            at = hits.next(at).value();
            QCOMPARE(at, beginning);
        }
    }
}

/// Traces stand over their samples at every zoom and place, and new rows take the place of old
/// ones.
void tst_AidPane::followsTheWaves()
{
    Aided aided;
    QRandomGenerator random(5);
    QScrollBar *bar = aided.waves->horizontalScrollBar();
    for (const qreal zoom : {1.0, 0.25, 4.0, 0.5}) {
        aided.zoomTo(zoom);
        bar->setValue(random.bounded(bar->maximum()));
        Viewer::settle();
        const auto *tracks = aided.part<AidTracks>();
        QCOMPARE(tracks->viewport()->width(), aided.waves->viewport()->width());
        const QImage image = pixelsOf(tracks->viewport());
        int seen = 0;
        for (int k = 0; k < kSamples; ++k) {
            const int left = aided.waves->mapFromScene(k * CLOCK_PITCH, 0).x();
            const qreal middle = left + CLOCK_PITCH * zoom / 2 + 0.5;
            if (left < 0 || middle + 3 >= image.width())
                continue;
            ++seen;
            for (int row = 1; row < aided.texts.size(); ++row) {
                if (aided.texts[row][k] != u'?') // a hatched one may be of any colour
                    QCOMPARE(shownAt(image, row, middle), aided.texts[row][k]);
            }
        }
        QVERIFY(seen >= 4);
    }
    aided.rows.rows[1] = rowOf(QString(kSamples, u'1'));
    aided.widget->showAidRows(aided.rows);
    const QImage image = pixelsOf(aided.part<AidTracks>()->viewport());
    QCOMPARE(shownAt(image, 1, 300), u'1');
}

/// By keys, round the ends, with the count in the bar, ticks of both kinds on the ruler, and
/// nothing of it in what is saved or kept.
void tst_AidPane::goesFromHitToHit()
{
    Aided aided;
    QDomDocument before;
    before.appendChild(aided.widget->saveWindow(before));
    const QString &text = aided.texts.first();
    QList<int> hits;
    for (int k = 0; k < kSamples; ++k) {
        if (text[k] == u'1' && (k == 0 || text[k - 1] != u'1'))
            hits.append(k);
    }
    aided.plant(0);
    const auto marker = [&] { return aided.ruler->timeMarker()->clock(); };
    for (qsizetype hit = hits.first() == 0 ? 1 : 0; hit < hits.size(); ++hit) {
        aided.press(Qt::Key_F5);
        QCOMPARE(marker(), hits[hit]);
        QCOMPARE(aided.said(),
                 QStringLiteral("Trigger: hit %1 of %2").arg(hit + 1).arg(hits.size()));
    }
    // A hit is as long as it holds, and its samples are ticks. The find bar's stand below.
    aided.ruler->setHits(SampleHits(aidBeginnings(aided.rows.rows.first())), {});
    Viewer::settle();
    const QImage ruler = pixelsOf(aided.ruler->viewport());
    const int last = hits.last();
    for (int k = last - 3; k < last + 3; ++k) {
        const int x = aided.ruler->mapFromScene(k * CLOCK_PITCH, 0).x();
        const auto has = [&](const QColor &color, int y) {
            return ruler.pixelColor(x, y) == color || ruler.pixelColor(x - 1, y) == color;
        };
        QCOMPARE(has(QColor(0x50, 0xE0, 0x70), 33), text[k] == u'1');
        if (k != last) // which is the current one, from top to foot
            QVERIFY(!has(QColor(0xFF, 0xB0, 0), 47));
    }
    aided.press(Qt::Key_F5);
    QCOMPARE(marker(), hits.first());
    QVERIFY2(aided.said().endsWith(", from the start again"), qPrintable(aided.said()));
    aided.press(Qt::Key_F5, Qt::ShiftModifier);
    QCOMPARE(marker(), hits.last());
    // From the inside of a hit, back to its beginning.
    const auto inside = text.indexOf(u"11");
    aided.ruler->moveActiveMarker(int(inside) + 1);
    aided.press(Qt::Key_F5, Qt::ShiftModifier);
    QCOMPARE(marker(), int(inside));

    QDomDocument after;
    after.appendChild(aided.widget->saveWindow(after));
    QCOMPARE(after.toString(), before.toString());
    // Without rows the keys are nobody's, and the panes are as they were.
    aided.widget->hideAidRows();
    aided.press(Qt::Key_F5);
    QCOMPARE(marker(), int(inside));
    QVERIFY(aided.part<AidTracks>()->isHidden() && aided.part<AidNames>()->isHidden());
    QCOMPARE(aided.waves->geometry().top(), kRulerHeight);
}

void tst_AidPane::worksInAComparedPage()
{
    auto aided = std::make_unique<Aided>();
    WindowSamples other{aided->widget->signalMap(), 15}; // 10 samples more before the trigger
    ComparedPage page(aided->widget.release(), nullptr);
    page.resize(1320, 800);
    page.compareWith("other", other);
    page.show();
    QVERIFY(QTest::qWaitForWindowActive(&page));
    Viewer::settle();
    aided->waves->horizontalScrollBar()->setValue(aided->waves->horizontalScrollBar()->minimum());
    Viewer::settle();
    const int zero = aided->waves->mapFromScene(0, 0).x();
    QVERIFY(zero > 100);
    const auto *tracks = page.upper()->findChild<AidTracks *>();
    const QImage image = pixelsOf(tracks->viewport());
    QCOMPARE(image.pixel(zero - 60, 4), qRgb(0, 0, 0));
    if (aided->texts[1][0] != u'?')
        QCOMPARE(shownAt(image, 1, zero + 20), aided->texts[1][0]);
    // The key works below as well.
    page.findChildren<WaveMonitorWidget *>().last()->focusWaves();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F5);
    Viewer::settle();
    QVERIFY(page.upper()->findChild<QLabel *>("aidText")->text().contains("hit "));
}

/// Many rows scroll in a part of the height, and a low viewer does without.
void tst_AidPane::leavesRoomForTheWaves()
{
    Aided aided(32);
    for (const int height : {600, 450, 300, 200, 120}) {
        aided.widget->resize(800, height);
        Viewer::settle();
        const auto *names = aided.part<AidNames>();
        QVERIFY(aided.waves->viewport()->height() >= std::min(height, 260) / 4);
        QCOMPARE(names->isVisible(), height > 190);
        // Names and rows stay side by side.
        const auto top = [](const QWidget *widget) { return widget->mapToGlobal(QPoint()).y(); };
        QCOMPARE(top(aided.tree->viewport()), top(aided.waves->viewport()));
        if (names->isVisible())
            QCOMPARE(top(names) + 20, top(aided.part<AidTracks>()));
    }
    // A row has room for its text.
    QFont large = QApplication::font();
    const QScopeGuard back([usual = large] { QApplication::setFont(usual); });
    large.setPointSize(15);
    QApplication::setFont(large);
    const Aided readable(2);
    QVERIFY(readable.part<AidTracks>()->fullHeight() >=
            3 * readable.part<AidNames>()->fontMetrics().height());
}

KEO_WIDGET_TEST_MAIN(tst_AidPane)
#include "tst_aidpane.moc"
