#pragma once

#include <QSet>
#include <QString>

#include <optional>

/// The truth table worked out the slow way: values are substituted as text and each entry is
/// evaluated for itself. Shared by the unit test and the fuzz target.
class NaiveTable final
{
public:
    static QString of(QString text)
    {
        char letter = 'A';
        for (int unit = 15; unit >= 0; --unit) {
            const QString name = QStringLiteral("M%1").arg(unit);
            if (text.contains(name))
                text = text.split(name).join(QLatin1Char(letter++));
        }
        QSet<QChar> letters;
        for (const QChar c : text) {
            if (isLetter(c))
                letters.insert(c);
        }
        const auto count = int(letters.size());
        if (count > 16)
            return QString(65536, u'x');
        const std::optional<QString> postfix = inPostfix(text);
        QString table;
        for (int i = 0; i < (1 << count); ++i)
            table += postfix ? entry(*postfix, QString::number(i, 2).rightJustified(count, u'0'))
                             : QChar(u'x');
        return table;
    }

private:
    static bool isLetter(QChar c) { return c >= u'A' && c <= u'Z'; }
    static int rank(QChar c) { return int(QStringLiteral("|^&!").indexOf(c)) + 1; }

    static std::optional<QString> inPostfix(const QString &text)
    {
        QString out;
        QString waiting;
        for (const QChar c : text) {
            if (isLetter(c)) {
                out += c;
            } else if (c == u')' && !waiting.isEmpty()) {
                const qsizetype open = waiting.indexOf(u'(');
                if (open < 0)
                    return {};
                out += waiting.left(open);
                waiting.remove(0, open + 1);
            } else {
                while (c != u'(' && !waiting.isEmpty() && rank(waiting[0]) >= rank(c)) {
                    out += waiting[0];
                    waiting.remove(0, 1);
                }
                waiting.prepend(c);
            }
        }
        return out + waiting;
    }

    static QChar entry(const QString &postfix, const QString &digits)
    {
        QString values;
        for (QChar c : postfix) {
            if (isLetter(c)) {
                if (c.unicode() - u'A' >= digits.size())
                    return u'x';
                c = digits[c.unicode() - u'A'];
            }
            if (c == u'0' || c == u'1') {
                values += c;
            } else if (rank(c) > 0) {
                if (values.size() < (c == u'!' ? 1 : 2))
                    return u'x';
                const bool right = values.back() == u'1';
                values.chop(1);
                bool result = !right;
                if (c != u'!') {
                    const bool left = values.back() == u'1';
                    values.chop(1);
                    result = c == u'&' ? left && right : c == u'|' ? left || right : left != right;
                }
                values += result ? u'1' : u'0';
            }
        }
        return values.size() == 1 ? values[0] : QChar(u'x');
    }
};
