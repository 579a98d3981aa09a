// The table of allowed arrows in docs/architecture.md, as a test: reads every #include line of the
// sources and fails on one that points where its folder may not look.

#include <support/testmain.h>

#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QSet>

class tst_Layers : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void includesFollowTheArrows();
    void logicStaysFreeOfWidgets();
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

// Folders that a folder's files may include, itself not listed.
const QMap<QString, QSet<QString>> kAllowed = {
    {"base", {}},
    {"dialogs", {}},
    {"image", {}},
    {"config", {"base"}},
    {"link", {}},
    {"trigger", {"config", "dialogs"}},
    {"capture", {"base", "config", "link", "trigger"}},
    {"wave", {}},
    {"export", {"base", "wave"}},
    {"programmer", {"base", "dialogs"}},
    {"project",
     {"base", "dialogs", "config", "link", "trigger", "capture", "wave", "export", "programmer"}},
    {"shell",
     {"base", "dialogs", "config", "link", "trigger", "capture", "wave", "export", "programmer",
      "project", "image"}},
    {"cli", {"base", "config", "link", "trigger", "capture", "wave", "export", "project", "shell"}},
};

} // namespace

void tst_Layers::includesFollowTheArrows()
{
    const QList<Include> all = includesBelow(QStringLiteral("src"));
    QVERIFY(all.size() > 100); // an empty folder proves nothing
    QStringList wrong;
    for (const Include &include : all) {
        const QString folder = include.file.section(u'/', 1, 1);
        const QString target = include.target.section(u'/', 0, 0);
        QVERIFY2(kAllowed.contains(folder), qPrintable(folder + " has no place in the table"));
        if (target != folder && kAllowed.contains(target) && include.target.contains(u'/') &&
            !kAllowed[folder].contains(target))
            wrong.append(place(include));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

void tst_Layers::logicStaysFreeOfWidgets()
{
    static const QRegularExpression widget(QStringLiteral(
        "^Q(.*Widget|.*Dialog|MessageBox|Graphics.*|Painter.*|Pixmap|Image|Icon|Font.*|Color|"
        "Application|GuiApplication|(Tree|Table|List|Header|AbstractItem)View|.*Button|.*Edit|"
        ".*Box)$"));
    const QSet<QString> pureFolders = {"base", "config", "link", "capture"};
    QStringList wrong;
    for (const Include &include : includesBelow(QStringLiteral("src"))) {
        if (pureFolders.contains(include.file.section(u'/', 1, 1)) &&
            widget.match(include.target).hasMatch())
            wrong.append(place(include));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

void tst_Layers::simulatorKnowsNothingOfTheProgram()
{
    const QList<Include> all = includesBelow(QStringLiteral("simulator"));
    QVERIFY(all.size() > 20);
    QStringList wrong;
    for (const Include &include : all) {
        const QString target = include.target.section(u'/', 0, 0);
        if (include.target.contains(u'/') && kAllowed.contains(target))
            wrong.append(place(include));
        if (include.target.contains(QStringLiteral("../src")))
            wrong.append(place(include));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

KEO_TEST_MAIN(tst_Layers)
#include "tst_layers.moc"
