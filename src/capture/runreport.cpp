#include "runreport.h"

#include <QCoreApplication>
#include <QStringList>

namespace KEO {

namespace {

constexpr qsizetype kMostNames = 8;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::RunReport)
};

QString namesOf(const QList<RunReport::Window> &windows)
{
    QStringList names;
    for (const RunReport::Window &window : windows.first(qMin(windows.size(), kMostNames))) {
        names.append(Text::tr("core %1 window %2")
                         .arg(QString::number(window.core), QString::number(window.window)));
    }
    if (windows.size() > kMostNames)
        names.append(Text::tr("%1 more").arg(windows.size() - kMostNames));
    return names.join(QStringLiteral(", "));
}

} // namespace

QString RunReport::text() const
{
    QStringList sentences;
    if (server == Server::Silent)
        sentences.append(
            Text::tr("The cable server does not answer; another program may be using it."));
    if (server == Server::Gone)
        sentences.append(Text::tr("The cable server went away."));
    if (!missing.isEmpty())
        sentences.append(Text::tr("Not delivered: %1.").arg(namesOf(missing)));
    if (!doubtful.isEmpty())
        sentences.append(Text::tr("The samples may be wrong: %1.").arg(namesOf(doubtful)));
    return sentences.join(u' ');
}

} // namespace KEO
