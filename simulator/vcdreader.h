#pragma once

#include "outcome.h"

#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QString>

class QIODevice;

namespace Sim {

/// A variable of a value change dump.
struct VcdNet
{
    QString scope; ///< the scopes around it, joined by dots; may be empty
    QString name;  ///< without range
    int first = 0; ///< index of the most significant bit as declared
    int last = 0;  ///< index of the least significant bit
    bool hasRange = false;
    int width = 1; ///< bits
    int code = 0;  ///< nets of one code are one wire
};

/// The variables of a dump, found by the names that a core description gives them.
class VcdNets final
{
public:
    /// One bit of a net: its code, and the bit counted from the least significant one.
    struct Bit
    {
        int code = 0;
        int bit = 0;

        bool operator==(const Bit &other) const = default;
    };

    void add(VcdNet net);
    [[nodiscard]] qsizetype size() const { return m_nets.size(); }
    [[nodiscard]] const QList<VcdNet> &all() const { return m_nets; }

    /// Finds the one-bit net \a wanted, or the bit "bus[3]" of a vector, by its path or by any end
    /// of its path that begins with a whole name; separators are "." and "/". Of several, the one
    /// nearest to the top counts. The failure says why there is none.
    [[nodiscard]] Outcome<Bit> find(const QString &wanted) const;

private:
    QList<VcdNet> m_nets;
    QMultiHash<QString, qsizetype> m_byLeaf; ///< last part of the name
};

/// Takes what a dump says, in its order.
class VcdListener
{
public:
    virtual ~VcdListener() = default;

    /// The header is complete. \a codes is the number of different codes. A text that isn't empty
    /// ends the reading with that error.
    virtual QString netsKnown(const VcdNets &nets, int codes) = 0;
    /// Whether values of this code are worth reporting.
    [[nodiscard]] virtual bool wants(int code) const = 0;
    /// A value from now on. \a bits are the characters of the dump, most significant first, and may
    /// be fewer or more than the net's.
    virtual void change(int code, QByteArrayView bits) = 0;
    /// All changes of one point in time were told. False ends the reading, as enough is known.
    virtual bool timePassed() = 0;
};

/// Reads a value change dump as a stream: memory goes with the number of nets, not with the length
/// of the file. Understands what the common simulators write: scalars and vectors in either case,
/// real numbers and strings (skipped), ranges in either direction and with or without a blank in
/// front, vectors taken apart into bits, one wire under several names, dumps that were cut off.
/// Returns an empty text, or the error with its line.
QString readVcd(QIODevice &device, VcdListener &listener);

} // namespace Sim
