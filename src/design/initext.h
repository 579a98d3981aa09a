#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace KEO {

/// The text of an INI file as the toolkit's settings read and write it, without its files: no lock,
/// no temporary file, and a value never becomes an object. Only the default section, `[General]`,
/// is looked at. Values are UTF-8; a list of several texts counts as none.
class IniText final
{
public:
    explicit IniText(const QByteArray &bytes);

    /// Is every line a section, a comment or a key with a value?
    [[nodiscard]] bool isWellFormed() const { return m_isWellFormed; }
    /// Is there a value in any section from which the toolkit would make an object of any type?
    [[nodiscard]] bool holdsSerialisedObject() const { return m_holdsObject; }
    /// The text of \a key in the default section, the last one if there are several; empty if it
    /// is missing or no text.
    [[nodiscard]] QString value(const QString &key) const;
    /// The bytes with \a values, in their order, first in the default section, in place of the
    /// present ones of their keys. All other bytes stay as they are.
    [[nodiscard]] QByteArray with(const QList<QPair<QString, QString>> &values) const;

private:
    /// A key with its value; offsets into the bytes.
    struct Entry
    {
        qsizetype start = 0;
        qsizetype end = 0; ///< behind the line end
        QByteArray key;
        QByteArray value;       ///< as it stands
        bool isDefault = false; ///< in the default section
    };
    void readLine(qsizetype start, qsizetype end, qsizetype equals, bool *inDefault);

    QByteArray m_bytes;
    QList<Entry> m_entries;
    qsizetype m_defaultStart = -1; ///< behind the first header of the default section
    bool m_isWellFormed = true;
    bool m_holdsObject = false;
};

} // namespace KEO
