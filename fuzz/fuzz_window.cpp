// A saved window from outside: reading it, writing what was read and reading that again must come
// to rest at once, and every export of it must work, with the same bytes through both doors.

#include <export/csvwriter.h>
#include <export/plaincsvwriter.h>
#include <export/plainvcdwriter.h>
#include <export/prnwriter.h>
#include <export/vcdwriter.h>
#include <wave_data/windowcontents.h>

#include <QBuffer>
#include <QDomDocument>

#include <cstdlib>

using namespace KEO;
using WaveMonitor::WindowContents;

namespace {

constexpr size_t kMaximumInput = 16 * 1024; // the DOM is quadratic in depth and attributes

void require(bool condition)
{
    if (!condition)
        std::abort();
}

QByteArray xmlOf(const WindowContents &contents)
{
    QDomDocument document;
    document.appendChild(contents.writeWindow(document));
    return document.toByteArray(-1);
}

template <typename Write>
QByteArray written(Write write)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    require(write(buffer));
    return buffer.data();
}

QByteArray exportsOf(const ExportWindow &window, int trigger)
{
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(0);
    return written([&](QIODevice &out) { return writeCsv(out, "ns", 3, window); }) +
           written([&](QIODevice &out) { return writePrn(out, "ns", 3, window, 1); }) +
           written([&](QIODevice &out) {
               return writePrnBuses(out, "ns", 3, window, {0, 1});
           }) +
           written([&](QIODevice &out) {
               return writeVcd(out, "dut", "clk", true, "ps", 5, trigger, window, date);
           }) +
           written([&](QIODevice &out) {
               return writePlainCsv(out, "ns", 3, trigger, Formulas::Disarmed, window);
           }) +
           written([&](QIODevice &out) {
               return writePlainVcd(out, {"dut", 5, trigger, date}, window);
           }) +
           readBusNames(window).join(u',').toUtf8();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    QDomDocument document;
    if (size > kMaximumInput ||
        !document.setContent(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size))))
        return 0;
    WindowContents contents;
    const QDomElement element = document.documentElement();
    exportsOf(element, 0); // as it came: ids may be repeated or no numbers
    if (!contents.readWindow(element))
        return 0;

    const QByteArray xml = xmlOf(contents);
    QDomDocument again;
    require(again.setContent(xml));
    WindowContents reread;
    require(reread.readWindow(again.documentElement()));
    require(xmlOf(reread) == xml);
    require(reread.signalMap() == contents.signalMap());
    const int trigger = contents.triggerPosition();
    require(exportsOf(contents, trigger) == exportsOf(again.documentElement(), trigger));
    return 0;
}
