#include <support/widgettest.h>
#include <wave/traces/buswaveitem.h>
#include <wave/traces/signalwaveitem.h>
#include <wave/traces/tracepainting.h>
#include <wave_data/dataformat.h>

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionGraphicsItem>

#include <cmath>
#include <random>
#include <vector>

using namespace WaveMonitor;

namespace {

constexpr QSize kViewport(640, 100); // three rows and a part of the fourth
constexpr int kScrolledDown = 7;     // which cuts the first row as well

using Painting = std::function<void(QPainter &, const QRectF &exposed)>;

/// A row painted in the plainest way, to compare the items with.
class PlainItem final : public QGraphicsItem
{
public:
    PlainItem(qsizetype samples, Painting painting)
        : m_samples(samples), m_painting(std::move(painting))
    {
        setFlag(ItemUsesExtendedStyleOption);
    }
    [[nodiscard]] QRectF boundingRect() const override { return {0, 0, m_samples * 50.0, 30}; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *) override
    {
        m_painting(*painter, option->exposedRect);
    }

private:
    qsizetype m_samples;
    Painting m_painting;
};

void paintGround(QPainter &painter, const QRectF &exposed, qreal separator, bool selected)
{
    painter.setPen(QPen(QColor(0x55, 0x55, 0x55), 0));
    painter.drawLine(QPointF(exposed.left(), separator), QPointF(exposed.right(), separator));
    if (selected)
        painter.fillRect(
            QRectF(exposed.x(), exposed.y() + 1, exposed.width(), exposed.height() - 1),
            QColor::fromRgba(0x70888888));
}

QPen tracePen(const QColor &color, Qt::PenJoinStyle join)
{
    return QPen(QBrush(color), 0, Qt::SolidLine, Qt::SquareCap, join);
}

/// Draws lines as wide as a pixel of the widget: once for each pixel of the device that it covers.
/// On a ground of their own with room around, since the toolkit cuts lines off at the border of
/// what it draws on and then slants land a pixel off.
void drawWide(QPainter &painter, const std::function<void(QPainter &)> &lines)
{
    constexpr int kRoom = 64;
    constexpr qreal kError = 1e-6; // what misses a border by less is on it
    const QPaintDevice &device = *painter.paintEngine()->paintDevice();
    const int width = int(device.devicePixelRatioF());
    QImage ground(device.width() + 2 * kRoom, device.height() + 2 * kRoom,
                  QImage::Format_ARGB32_Premultiplied);
    ground.fill(Qt::transparent);
    QPainter pen(&ground);
    pen.setPen(painter.pen());
    for (int x = kRoom; x < kRoom + width; ++x) {
        for (int y = kRoom; y < kRoom + width; ++y) {
            pen.setTransform(painter.deviceTransform() *
                             QTransform::fromTranslate(x + kError, y + kError));
            lines(pen);
        }
    }
    pen.end();
    painter.save();
    painter.resetTransform();
    painter.setTransform(painter.deviceTransform().inverted());
    painter.drawImage(-kRoom, -kRoom, ground);
    painter.restore();
}

struct Look
{
    QColor color = Qt::green;
    bool selected = false;
    const DataFormat *format = nullptr;
};

/// Every sample by itself.
void paintSignal(QPainter &painter, const QRectF &exposed, const QBitArray &data, const Look &look)
{
    painter.save();
    paintGround(painter, exposed, 30, look.selected);
    painter.setPen(tracePen(look.color, Qt::MiterJoin));
    const int first = std::max(0, int(std::floor(exposed.x() / 50)));
    const int end = std::min(int(data.size()), int(std::ceil(exposed.right() / 50)));
    drawWide(painter, [&](QPainter &pen) {
        for (int i = first; i < end; ++i) {
            const int y = data[i] ? 6 : 24;
            pen.drawLine(50 * i, y, 50 * (i + 1), y);
            if (i >= 1 && data[i - 1] != data[i])
                pen.drawLine(50 * i, 6, 50 * i, 24);
        }
    });
    painter.restore();
}

void paintBusText(QPainter &painter, const QRectF &exposed, const QString &text, int run, int end)
{
    const qreal zoom = painter.transform().m11();
    const QFont font(QStringLiteral("Courier New"), 9);
    const QRectF measured = QFontMetricsF(font).boundingRect(text);
    const qreal space = (end - run) * 50 * zoom - 8;
    if (space < measured.width())
        return;
    const QRectF visible = QRectF(run * 50 * zoom + 4, 7, space, 20)
                               .intersected(QRectF(exposed.x() * zoom, exposed.y(),
                                                   exposed.width() * zoom, exposed.height()));
    if (measured.width() > visible.width() || measured.height() > visible.height())
        return;
    painter.save();
    const QTransform t = painter.transform();
    painter.setFont(font);
    painter.setTransform(
        QTransform(1, t.m12(), t.m13(), t.m21(), 1, t.m23(), t.m31(), t.m32(), t.m33()));
    painter.drawText(visible, text, QTextOption(Qt::AlignLeft | Qt::AlignVCenter));
    painter.restore();
}

/// Every sample by itself, each a value of its own.
void paintBus(QPainter &painter, const QRectF &exposed, const QList<QBitArray> &samples,
              const Look &look)
{
    painter.save();
    paintGround(painter, exposed, 29, look.selected);
    painter.setPen(tracePen(look.color, Qt::RoundJoin));
    const qreal slant = 4 / painter.transform().m11();
    const int count = int(samples.size());
    const int start = std::max(0, int(std::floor(exposed.x() / 50 - 3)));
    const int end = std::min(count, int(std::ceil(exposed.right() / 50 + 3)));
    drawWide(painter, [&](QPainter &pen) {
        for (int i = start; i < end; ++i) {
            const qreal x0 = 50 * i;
            const qreal x1 = 50 * (i + 1);
            const bool left = i == 0 || samples[i] != samples[i - 1];
            const bool right = i == count - 1 || samples[i + 1] != samples[i];
            for (const int y : {6, 24}) {
                if (left)
                    pen.drawLine(QPointF(x0, 15), QPointF(x0 + slant, y));
                if (right)
                    pen.drawLine(QPointF(x1, 15), QPointF(x1 - slant, y));
                pen.drawLine(QPointF(left ? x0 + slant : x0, y),
                             QPointF(right ? x1 - slant : x1, y));
            }
        }
    });
    int pin = start;
    for (int i = start; i <= count && count > 0; ++i) {
        if (!look.format)
            continue;
        if (i == count || (i >= start + 1 && samples[i] != samples[i - 1])) {
            paintBusText(painter, exposed, look.format->toText(samples[pin]), pin, i);
            pin = i;
            if (pin > end)
                break;
        }
    }
    painter.restore();
}

/// The value of the bus at each sample; a member that ends too early reads as 0.
QList<QBitArray> transposed(const QList<QBitArray> &members)
{
    QList<QBitArray> samples;
    for (qsizetype i = 0; i < members.first().size(); ++i) {
        QBitArray value(members.size());
        for (qsizetype bit = 0; bit < members.size(); ++bit)
            value.setBit(bit, i < members[bit].size() && members[bit][i]);
        samples.append(value);
    }
    return samples;
}

enum class Samples { Random, Constant, Toggling, SlowClock, WordBorders };
constexpr Samples kAllSamples[] = {Samples::Random, Samples::Constant, Samples::Toggling,
                                   Samples::SlowClock, Samples::WordBorders};

QBitArray bits(Samples kind, qsizetype count, unsigned seed)
{
    std::mt19937 random(seed);
    QBitArray data(count);
    for (qsizetype i = 0; i < count; ++i) {
        const bool bit = kind == Samples::Random      ? (random() >> 9 & 1) != 0
                         : kind == Samples::Constant  ? seed % 2 != 0
                         : kind == Samples::Toggling  ? i % 2 != 0
                         : kind == Samples::SlowClock ? i / 37 % 2 != 0
                                                      : i % 64 == 0 || i % 128 == 63;
        data.setBit(i, bit);
    }
    return data;
}

struct Row
{
    QList<QBitArray> members; ///< one makes a signal
    Look look;
};

/// The same rows twice: by the items and plainly.
struct Rows
{
    explicit Rows(const std::vector<Row> &rows)
    {
        for (QGraphicsScene *scene : {&items, &plain})
            scene->setBackgroundBrush(Qt::black);
        for (const Row &row : rows) {
            WaveItem *item = waveItem(row);
            QGraphicsItem *same = plainItem(row);
            item->setColor(row.look.color);
            item->setSelected(row.look.selected);
            item->setY(30 * int(items.items().size()));
            same->setY(item->y());
            items.addItem(item);
            plain.addItem(same);
        }
    }

    QGraphicsScene items;
    QGraphicsScene plain;

private:
    static WaveItem *waveItem(const Row &row)
    {
        if (row.members.size() == 1) {
            auto *item = new SignalWaveItem;
            item->setData(row.members.first());
            return item;
        }
        auto *item = new BusWaveItem;
        item->setMembers(row.members);
        item->setFormat(row.look.format);
        return item;
    }

    static QGraphicsItem *plainItem(const Row &row)
    {
        const QList<QBitArray> values = transposed(row.members);
        return new PlainItem(values.size(), [=](QPainter &painter, const QRectF &exposed) {
            if (row.members.size() == 1)
                paintSignal(painter, exposed, row.members.first(), row.look);
            else
                paintBus(painter, exposed, values, row.look);
        });
    }
};

void setUp(QGraphicsView &view)
{
    view.setFrameShape(QFrame::NoFrame);
    view.setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    view.resize(kViewport);
}

/// What the view paints when \a exposed of it is uncovered.
QImage shown(QGraphicsView &view, const QRect &exposed, qreal pixelRatio)
{
    QImage image(exposed.size() * pixelRatio, QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::blue);
    view.viewport()->render(&image, QPoint(), exposed, {});
    return image;
}

std::vector<Row> someRows(Samples kind, qsizetype count)
{
    static const DataFormat hexadecimal;
    static const DataFormat decimal(DataFormat::SignedDecimal);
    const auto members = [=](int width) {
        QList<QBitArray> list;
        for (int i = 0; i < width; ++i) // a member that is too short reads as 0 beyond its end
            list.append(bits(kind, i == 1 ? count * 3 / 4 : count, unsigned(width + i)));
        return list;
    };
    return {{members(9), {Qt::green, true, &decimal}},
            {members(1), {Qt::yellow, false, nullptr}},
            {members(2), {Qt::red, false, &hexadecimal}},
            {members(1), {Qt::green, true, nullptr}}};
}

} // namespace

class tst_WaveItems final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void samePixelsAsSampleBySample_data();
    void samePixelsAsSampleBySample();
};

void tst_WaveItems::samePixelsAsSampleBySample_data()
{
    addColumns<qreal, qreal>({"zoom", "pixelRatio"});
    // The last five: sample borders between pixels, slants that just meet, lines of no length,
    // texts that fit or not by a rounding.
    for (const qreal zoom : {16.0, 4.0, 1.0, 1.0 / 2, 1.0 / 4, 1.0 / 16, 1.0 / 64, 1.0 / 256, 0.3,
                             0.0371, 0.16, 0.08, 0.06 + 0.01}) {
        for (const qreal pixelRatio : {1.0, 2.0})
            QTest::addRow("zoom %g, ratio %g", zoom, pixelRatio) << zoom << pixelRatio;
    }
    QTest::addRow("ratio of no whole number") << 0.25 << 1.5;
}

void tst_WaveItems::samePixelsAsSampleBySample()
{
    QFETCH(qreal, zoom);
    QFETCH(qreal, pixelRatio);
    const qreal inView = kViewport.width() / (50 * zoom);
    const qsizetype lengths[] = {qsizetype(inView * 2.5) + 5, qsizetype(inView * 0.6) + 1, 1};
    const QRect all({}, kViewport);
    for (const Samples kind : kAllSamples) {
        for (const qsizetype length : lengths) {
            Rows rows(someRows(kind, length));
            bool onPixels = true;
            auto *probe = new PlainItem(length, [&](QPainter &painter, const QRectF &) {
                onPixels = onPixels && pixelGrid(painter, Qt::green);
            });
            rows.items.addItem(probe);
            QGraphicsView items(&rows.items);
            QGraphicsView plain(&rows.plain);
            for (const int scroll : {0, 1, 133, 5000}) {
                for (QGraphicsView *view : {&items, &plain}) {
                    setUp(*view);
                    view->setSceneRect(0, 0, 50.0 * qreal(length), 120);
                    view->setTransform(QTransform::fromScale(zoom, 1));
                    view->horizontalScrollBar()->setValue(scroll);
                    view->verticalScrollBar()->setValue(scroll % 2 * kScrolledDown);
                }
                if (scroll > 0 && items.horizontalScrollBar()->value() == 0)
                    break;
                for (const QRect &exposed : {all, QRect(101, 10, 57, 75), QRect(333, 0, 1, 100)}) {
                    const auto message =
                        QStringLiteral("kind %1, %2 samples, scrolled by %3, exposed from %4")
                            .arg(int(kind))
                            .arg(length)
                            .arg(scroll)
                            .arg(exposed.x());
                    QVERIFY2(shown(items, exposed, pixelRatio) == shown(plain, exposed, pixelRatio),
                             qPrintable(message));
                }
            }
            QVERIFY(onPixels); // or line by line was compared with itself
        }
    }
}

KEO_WIDGET_TEST_MAIN(tst_WaveItems)
#include "tst_waveitems.moc"
