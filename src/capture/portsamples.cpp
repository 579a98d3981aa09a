#include "portsamples.h"

#include <config/coreconfig.h>

#include <QHash>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr qsizetype kNotCaptured = -1;

/// Where each name stands. One that stands for different samples could be any of them.
QHash<QString, qsizetype> placesOf(const QStringList &names, const QList<QBitArray> &captured)
{
    QHash<QString, qsizetype> places;
    for (qsizetype i = 0; i < std::min(names.size(), captured.size()); ++i) {
        if (names[i].isEmpty())
            continue;
        const auto place = places.find(names[i]);
        if (place == places.end())
            places.insert(names[i], i);
        else if (*place != kNotCaptured && captured[*place] != captured[i])
            *place = kNotCaptured;
    }
    return places;
}

} // namespace

PortSamples::PortSamples(const CoreConfig &core, const QList<QBitArray> &captured)
    : PortSamples(core, core.flatSignalNames(), captured)
{
}

PortSamples::PortSamples(const CoreConfig &core, const QStringList &names,
                         QList<QBitArray> captured)
    : m_captured(std::move(captured))
{
    for (const QBitArray &bits : std::as_const(m_captured))
        m_samples = std::max(m_samples, bits.size());
    const QHash<QString, qsizetype> places = placesOf(names, m_captured);
    for (const auto &port : core.triggers) {
        std::vector<qsizetype> &bits = m_places.emplace_back();
        for (const QString &name : port->flatSignalNames())
            bits.push_back(places.value(name, kNotCaptured));
    }
}

const QBitArray *PortSamples::bit(int port, int bit) const
{
    const qsizetype place = m_places[size_t(port)][size_t(bit)];
    return place == kNotCaptured ? nullptr : &m_captured[place];
}

} // namespace KEO
