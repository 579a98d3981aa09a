#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <initializer_list>

namespace Sim {

/// Takes values out of a JSON document and remembers the first thing that is wrong with it and
/// where, such as "cables.keo1.chain[0].idcode: must be ...". A missing value is fine and gives
/// the default; one of the wrong type gives it too, after the error. \a place is always the
/// parent's, empty for the root.
class JsonWalk
{
public:
    /// Value of "nth" for "every".
    static constexpr int kEvery = 0;

    /// \a directory is what paths in the document are relative to.
    explicit JsonWalk(QString directory) : m_directory(std::move(directory)) {}

    /// Empty when nothing was wrong.
    [[nodiscard]] const QString &error() const { return m_error; }
    void fail(const QString &place, const QString &text);
    static QString at(const QString &place, const char *key);

    /// Any key that isn't listed is an error, unless it is a comment.
    void allow(const QJsonObject &object, const QString &place,
               std::initializer_list<const char *> keys);
    QJsonObject object(const QJsonValue &value, const QString &place);
    QJsonArray array(const QJsonObject &parent, const QString &place, const char *key);
    QString text(const QJsonObject &object, const QString &place, const char *key);
    QStringList texts(const QJsonObject &object, const QString &place, const char *key);
    /// Absolute; empty when there is none.
    QString path(const QJsonObject &object, const QString &place, const char *key);
    bool flag(const QJsonObject &object, const QString &place, const char *key, bool otherwise);
    double number(const QJsonObject &object, const QString &place, const char *key,
                  double otherwise, double least, double most);
    int wholeNumber(const QJsonObject &object, const QString &place, const char *key, int otherwise,
                    int least, int most);
    /// A number from 1, or kEvery; the default is 1.
    int nth(const QJsonObject &object, const QString &place);

private:
    QString m_directory;
    QString m_error;
};

} // namespace Sim
