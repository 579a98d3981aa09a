#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

namespace KEO {

// Names of columns as programs take them that know nothing of this one: each differs from all
// others, and none holds what would end it early.

/// Finds the first name of "name", "name_2", "name_3" and so on that is free. Asks for each number
/// once, however often a name is wanted.
class NumberedNames final
{
public:
    [[nodiscard]] QString firstFree(const QString &name,
                                    const std::function<bool(const QString &)> &isFree);

private:
    QHash<QString, int> m_next; ///< number to try next behind a name
};

/// Hands out titles of which no two are equal.
class UniqueTitles final
{
public:
    /// \a title, or with "_2", "_3" and so on behind it if that was given out before. An empty one
    /// becomes "unnamed".
    [[nodiscard]] QString take(const QString &title);

private:
    QSet<QString> m_taken;
    NumberedNames m_numbers;
};

/// A variable's name in a Value Change Dump.
struct VcdName
{
    QStringList scopes; ///< below the top, outermost first
    QString base;
    QString index; ///< such as "[3]" or "[7:0]"; may be empty
};

/// Takes a row's title apart: what stands before a "/" is a scope. A variable of several bits
/// (\a width) always has an index, its own if the title ends in one that fits, else "[width-1:0]";
/// one of a single bit only if its title ends in "[number]". What could end a name early becomes
/// "_": blanks, all other brackets, a dot, a backslash, a dollar sign at the start. Of a hostile
/// title's scopes only the outer ones stay scopes.
[[nodiscard]] VcdName vcdName(const QString &title, qsizetype width);
/// A name of one word, such as a scope's, by the same rules.
[[nodiscard]] QString vcdWord(const QString &text);

/// Hands out the names of one scope. Only bits of a single index each may share a base.
class VcdScopeNames final
{
public:
    /// Changes the base as UniqueTitles does.
    void makeUnique(VcdName &name, qsizetype width);

private:
    QSet<QString> m_whole; ///< bases of variables that share theirs with none
    QSet<QString> m_bits;  ///< bases of single bits
    QSet<QString> m_taken; ///< base and index of single bits
    NumberedNames m_numbers;
};

} // namespace KEO
