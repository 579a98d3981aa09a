// The table of allowed arrows in docs/architecture.md, as a test: reads the table, every #include
// line of the sources and what the targets link, and fails on one that points where it may not.

#include <support/testmain.h>

#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

class tst_Layers : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void includesFollowTheArrows();
    void linksFollowTheArrows();
    void simulatorKnowsNothingOfTheProgram();
};

namespace {

const QString kSource = QStringLiteral(KEO_SOURCE_DIR);

struct Include
{
    QString file; // relative to the source folder
    int line = 0;
    QString target;
};

QList<Include> includesBelow(const QString &folder)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*#\\s*include\\s*[<\"]([^>\"]+)"));
    QList<Include> includes;
    QDirIterator files(kSource + u'/' + folder, {QStringLiteral("*.h"), QStringLiteral("*.cpp")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            qFatal("cannot read %s", qPrintable(file.fileName()));
        for (int line = 1; !file.atEnd(); ++line) {
            const auto match = pattern.match(QString::fromUtf8(file.readLine()));
            if (match.hasMatch())
                includes.append({file.fileName().mid(kSource.size() + 1), line, match.captured(1)});
        }
    }
    return includes;
}

QString place(const Include &include)
{
    return QStringLiteral("%1:%2 includes %3")
        .arg(include.file, QString::number(include.line), include.target);
}

/// The table of docs/architecture.md, by name of a target.
struct Target
{
    QString folder; // below src; empty for one elsewhere
    QSet<QString> mayInclude;
};

QString textOf(const QString &path)
{
    QFile file(kSource + u'/' + path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    return QString::fromUtf8(file.readAll());
}

/// A row is | folder, empty for that of the row above | targets | what it holds | may include |.
QMap<QString, Target> readTable()
{
    static const QRegularExpression quoted(QStringLiteral("`([a-z_]+)`"));
    static const QRegularExpression comma(QStringLiteral(", "));
    QMap<QString, Target> table;
    QString folder;
    const QStringList lines = textOf(QStringLiteral("docs/architecture.md")).split(u'\n');
    for (const QString &line : lines) {
        const QStringList cells = line.split(u'|');
        if (cells.size() != 6 || !cells.at(2).contains(u'`'))
            continue;
        if (cells.at(1).contains(u'`'))
            folder = cells.at(1).contains(QStringLiteral("`src/"))
                         ? cells.at(1).section(u'/', 1).section(u'`', 0, 0)
                         : QString();
        Target target{folder, {}};
        const QString includes = cells.at(4).trimmed();
        if (includes != QStringLiteral("nothing")) {
            const QStringList names = includes.split(comma);
            target.mayInclude = QSet<QString>(names.begin(), names.end());
        }
        table.insert(quoted.match(cells.at(2)).captured(1), target);
    }
    return table;
}

/// Folders that the files of a folder may include, itself not listed.
QMap<QString, QSet<QString>> allowedFolders(const QMap<QString, Target> &table)
{
    QMap<QString, QSet<QString>> allowed;
    for (const Target &target : table) {
        if (target.folder.isEmpty())
            continue;
        QSet<QString> &folders = allowed[target.folder];
        for (const QString &name : target.mayInclude)
            folders.insert(table.value(name).folder);
        folders.remove(target.folder);
    }
    return allowed;
}

/// Folder of a file or an included header: "wave/tree/x.h" gives "wave/tree".
QString folderOf(const QString &path)
{
    return path.left(path.lastIndexOf(u'/'));
}

} // namespace

void tst_Layers::includesFollowTheArrows()
{
    const QMap<QString, QSet<QString>> allowed = allowedFolders(readTable());
    const QList<Include> all = includesBelow(QStringLiteral("src"));
    QVERIFY(all.size() > 100); // an empty folder proves nothing
    QStringList wrong;
    for (const Include &include : all) {
        QString folder = folderOf(include.file).section(u'/', 1);
        while (!allowed.contains(folder) && folder.contains(u'/'))
            folder = folderOf(folder); // a tool of the folder above
        const QString target = folderOf(include.target);
        QVERIFY2(allowed.contains(folder), qPrintable(folder + " has no place in the table"));
        if (target != folder && allowed.contains(target) && include.target.contains(u'/') &&
            !allowed[folder].contains(target))
            wrong.append(place(include));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

// A target links what its row names, and every library has a row.
void tst_Layers::linksFollowTheArrows()
{
    const QMap<QString, Target> table = readTable();
    for (auto target = table.begin(); target != table.end(); ++target) {
        for (const QString &name : target->mayInclude)
            QVERIFY2(table.contains(name), qPrintable(target.key() + " names " + name));
    }
    static const QRegularExpression library(
        QStringLiteral("(?:keo_add_library\\(|target_link_libraries\\(keo_)(\\w+)([^)]*)\\)"));
    static const QRegularExpression link(QStringLiteral("\\bkeo::(\\w+)"));
    QDirIterator files(kSource + QStringLiteral("/src"),
                       {QStringLiteral("CMakeLists.txt"), QStringLiteral("*.cmake")}, QDir::Files,
                       QDirIterator::Subdirectories);
    int links = 0;
    QStringList wrong;
    while (files.hasNext()) {
        const QString text = textOf(files.next().mid(kSource.size() + 1));
        for (const auto &found : library.globalMatch(text)) {
            const QString target = found.captured(1);
            QVERIFY2(table.contains(target), qPrintable(target + " has no place in the table"));
            for (const auto &name : link.globalMatch(found.captured(2))) {
                ++links;
                if (name.captured(1) != QStringLiteral("warnings") &&
                    !table[target].mayInclude.contains(name.captured(1)))
                    wrong.append(target + " links " + name.captured(1));
            }
        }
    }
    QVERIFY(links > 20);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

void tst_Layers::simulatorKnowsNothingOfTheProgram()
{
    const QMap<QString, QSet<QString>> allowed = allowedFolders(readTable());
    const QList<Include> all = includesBelow(QStringLiteral("simulator"));
    QVERIFY(all.size() > 20);
    QStringList wrong;
    for (const Include &include : all) {
        const QString target = include.target.section(u'/', 0, 0);
        if (include.target.contains(u'/') && allowed.contains(target))
            wrong.append(place(include));
        if (include.target.contains(QStringLiteral("../src")))
            wrong.append(place(include));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

KEO_TEST_MAIN(tst_Layers)
#include "tst_layers.moc"
