#pragma once

#include <wave_data/windowcontents.h>

#include <QBitArray>
#include <QDomDocument>
#include <QRandomGenerator>

/// Names and texts with everything that a file could trip over.
inline QString randomName(QRandomGenerator &random)
{
    static const QStringList pieces{"a", "[3]", " ",  "\"",         "'",        "<", "&amp;",
                                    ">", "]]>", "\t", "\n",         "%1",       "ü", "信",
                                    "=", "@",   ";",  "\U0001F600", "<!-- -->", "\r"};
    QString name;
    for (int length = random.bounded(6); length > 0; --length)
        name += pieces[random.bounded(int(pieces.size()))];
    return name;
}

inline QBitArray randomBits(QRandomGenerator &random, int samples)
{
    QBitArray bits(samples);
    for (int i = 0; i < samples; ++i)
        bits.setBit(i, random.bounded(2));
    return bits;
}

/// Shows signals with the ids 0 to \a names.size() - 1 as a user could have arranged them: rows in
/// any order, some gone, some twice, buses with and without members, all with names, radixes and
/// colours.
inline void arrangeRandomly(WaveMonitor::WindowContents &contents, QRandomGenerator &random,
                            const QStringList &names, int samples)
{
    using namespace WaveMonitor;
    for (int id = 0; id < names.size(); ++id)
        contents.addSignal({id, names[id], randomName(random), randomBits(random, samples)});
    contents.clearLayout();
    const auto randomRow = [&] {
        auto row = std::make_unique<SignalLayoutNode>(int(random.bounded(names.size() + 1)));
        row->text = randomName(random);
        row->color = random.bounded(0x1000000);
        return row;
    };
    for (int rows = random.bounded(12); rows > 0; --rows) {
        if (random.bounded(2)) {
            contents.layout().appendChild(randomRow());
            continue;
        }
        auto bus = std::make_unique<BusLayoutNode>();
        bus->name = randomName(random);
        bus->text = randomName(random);
        bus->color = random.bounded(0x1000000);
        bus->format->setType(DataFormat::Type(random.bounded(6)));
        for (int members = random.bounded(5); members > 0; --members)
            bus->appendChild(randomRow());
        contents.layout().appendChild(std::move(bus));
    }
}

/// Everything in \a contents as text.
inline QString textOf(const WaveMonitor::WindowContents &contents)
{
    QDomDocument document;
    document.appendChild(contents.writeWindow(document));
    return document.toString(-1);
}
