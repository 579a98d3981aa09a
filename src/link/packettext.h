#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVarLengthArray>

#include <optional>

namespace KEO {

// Packets as text: printable ASCII alone, whatever a packet holds, and all of it, so that the same
// packet can be made of it again. docs/link-protocol.md has the form. All this works on payloads as
// they pass the wire, since it happens for each of very many.

/// Appends a name as it is, or in quotes when it holds more than letters, digits, "_", "-" and ".".
void appendNameText(QByteArray &line, const QString &name);

/// Appends \a text in quotes.
void appendQuotedText(QByteArray &line, const QString &text);

/// The id that a packet carries.
struct PacketId
{
    bool isData = false; ///< "data_request_id"; a packet with both kinds counts as the other one
    quint32 number = 0;
    QByteArrayView entry; ///< where it stands in the payload
};

/// A payload, taken apart once. Shows into it, so it must not outlive it.
class PacketText final
{
public:
    /// Malformed payloads have no parts.
    explicit PacketText(QByteArrayView payload);

    [[nodiscard]] bool isMalformed() const { return m_isMalformed; }
    [[nodiscard]] QByteArrayView payload() const { return m_payload; }
    /// Nothing if there is no id, or it is no number on the wire.
    [[nodiscard]] const std::optional<PacketId> &id() const { return m_id; }
    /// Appends the entries with a blank in front of each, from the last one to the first, bit
    /// arrays at the end.
    void appendTo(QByteArray &line) const;

private:
    struct Entry
    {
        QByteArrayView key;
        QByteArrayView value; ///< from the type number on
        bool isBits = false;
    };

    bool takeApart();

    QByteArrayView m_payload;
    QVarLengthArray<Entry, 12> m_entries; ///< as they stand on the wire
    std::optional<PacketId> m_id;
    bool m_isMalformed = false;
};

} // namespace KEO
