#pragma once

#include <QMap>
#include <QString>

/// The truth table worked out the slow way: values are substituted as text and each entry is
/// evaluated for itself. Shared by the unit test and the fuzz target.
class NaiveTable final
{
public:
    static QString of(const QString &text)
    {
        const QString letters = replaced(text);
        QMap<char16_t, int> seen;
        for (const QChar c : letters) {
            if (c >= u'A' && c <= u'Z')
                seen[c.unicode()] = 1;
        }
        const int count = int(seen.size());
        if (count > 16)
            return QString(65536, u'x');
        bool balanced = true;
        const QString postfix = inPostfix(letters, &balanced);
        QString table;
        for (int i = 0; i < (1 << count); ++i) {
            const QString digits = QString::number(i, 2).rightJustified(count, u'0');
            table += balanced ? entry(postfix, digits, count) : QChar(u'x');
        }
        return table;
    }

private:
    static QString replaced(QString text)
    {
        char letter = 'A';
        for (int unit = 15; unit >= 0; --unit) {
            const QString name = QStringLiteral("M%1").arg(unit);
            if (text.contains(name))
                text = text.split(name).join(QLatin1Char(letter++));
        }
        return text;
    }

    static int rank(QChar c) { return int(QStringLiteral("|^&!").indexOf(c)) + 1; }

    static QString inPostfix(const QString &text, bool *balanced)
    {
        QString out;
        QString waiting;
        for (const QChar c : text) {
            if (c >= u'A' && c <= u'Z') {
                out += c;
                continue;
            }
            if (waiting.isEmpty() || c == u'(') {
                waiting.prepend(c);
                continue;
            }
            if (c == u')') {
                const qsizetype open = waiting.indexOf(u'(');
                if (open < 0) {
                    *balanced = false;
                    return {};
                }
                out += waiting.left(open);
                waiting.remove(0, open + 1);
                continue;
            }
            while (!waiting.isEmpty() && rank(waiting[0]) >= rank(c)) {
                out += waiting[0];
                waiting.remove(0, 1);
            }
            waiting.prepend(c);
        }
        return out + waiting;
    }

    static QChar entry(const QString &postfix, const QString &digits, int count)
    {
        QString values;
        for (QChar c : postfix) {
            if (c >= u'A' && c <= u'Z') {
                if (c.unicode() - u'A' >= count)
                    return u'x';
                c = digits[c.unicode() - u'A'];
            }
            if (c == u'0' || c == u'1') {
                values += c;
            } else if (c == u'!') {
                if (values.isEmpty())
                    return u'x';
                values.back() = values.back() == u'0' ? u'1' : u'0';
            } else if (c == u'&' || c == u'|' || c == u'^') {
                if (values.size() < 2)
                    return u'x';
                const bool right = values.back() == u'1';
                values.chop(1);
                const bool left = values.back() == u'1';
                const bool result = c == u'&'   ? left && right
                                    : c == u'|' ? left || right
                                                : left != right;
                values.back() = result ? u'1' : u'0';
            }
        }
        return values.size() == 1 ? values[0] : QChar(u'x');
    }
};
