#include "jsonwalk.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace Sim {

void JsonWalk::fail(const QString &place, const QString &text)
{
    if (m_error.isEmpty())
        m_error = place.isEmpty() ? text : place + QStringLiteral(": ") + text;
}

QString JsonWalk::at(const QString &place, const char *key)
{
    return place.isEmpty() ? QLatin1String(key) : place + u'.' + QLatin1String(key);
}

QJsonObject JsonWalk::object(const QJsonValue &value, const QString &place)
{
    if (!value.isObject() && !value.isUndefined())
        fail(place, QStringLiteral("must be an object"));
    return value.toObject();
}

QJsonArray JsonWalk::array(const QJsonObject &parent, const QString &place, const char *key)
{
    const QJsonValue value = parent.value(QLatin1String(key));
    if (!value.isArray() && !value.isUndefined())
        fail(at(place, key), QStringLiteral("must be an array"));
    return value.toArray();
}

void JsonWalk::allow(const QJsonObject &object, const QString &place,
                     std::initializer_list<const char *> keys)
{
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const bool known = std::any_of(keys.begin(), keys.end(), [&entry](const char *key) {
            return entry.key() == QLatin1String(key);
        });
        if (!known && !entry.key().startsWith(QStringLiteral("//")))
            fail(place, QStringLiteral("the key \"%1\" is unknown").arg(entry.key()));
    }
}

QString JsonWalk::text(const QJsonObject &object, const QString &place, const char *key)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isString() && !value.isUndefined())
        fail(at(place, key), QStringLiteral("must be a text"));
    return value.toString();
}

QStringList JsonWalk::texts(const QJsonObject &object, const QString &place, const char *key)
{
    QStringList texts;
    for (const QJsonValue value : array(object, place, key)) {
        if (!value.isString())
            fail(at(place, key), QStringLiteral("must hold texts only"));
        texts.append(value.toString());
    }
    return texts;
}

QString JsonWalk::path(const QJsonObject &object, const QString &place, const char *key)
{
    const QString name = text(object, place, key);
    return name.isEmpty() ? QString() : QDir(m_directory).absoluteFilePath(name);
}

bool JsonWalk::flag(const QJsonObject &object, const QString &place, const char *key,
                    bool otherwise)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isBool() && !value.isUndefined())
        fail(at(place, key), QStringLiteral("must be true or false"));
    return value.toBool(otherwise);
}

double JsonWalk::number(const QJsonObject &object, const QString &place, const char *key,
                        double otherwise, double least, double most)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined())
        return otherwise;
    const double number = value.toDouble(std::nan(""));
    if (!(number >= least && number <= most)) {
        fail(at(place, key), QStringLiteral("must be a number from %1 to %2")
                                 .arg(least, 0, 'f', 0)
                                 .arg(most, 0, 'f', 0));
        return otherwise;
    }
    return number;
}

int JsonWalk::wholeNumber(const QJsonObject &object, const QString &place, const char *key,
                          int otherwise, int least, int most)
{
    const double value = number(object, place, key, otherwise, least, most);
    if (value != std::floor(value))
        fail(at(place, key), QStringLiteral("must be a whole number"));
    return int(value);
}

int JsonWalk::nth(const QJsonObject &object, const QString &place)
{
    const QJsonValue value = object.value(QStringLiteral("nth"));
    if (value.isUndefined())
        return 1;
    if (value.toString() == QStringLiteral("every"))
        return kEvery;
    const int nth = value.toInt(0);
    if (nth < 1)
        fail(at(place, "nth"), QStringLiteral("must be a number from 1 or \"every\""));
    return nth;
}

} // namespace Sim
