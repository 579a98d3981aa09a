#include "siblingprogram.h"

#include <QCoreApplication>
#include <QDir>

namespace KEO {

QString siblingDirectory()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QStringLiteral("/../../Burner/bin"));
}

QString programPath(const QString &directory, const QString &name)
{
#ifdef Q_OS_WIN
    const QString suffix = QStringLiteral(".exe");
#else
    const QString suffix;
#endif
    return directory + QLatin1Char('/') + name + suffix;
}

} // namespace KEO
