#include "savedialog.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QVariant>

namespace KEO {

namespace {

const QString kSuffix = QStringLiteral(".analyzer_prj");

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::SaveDialog)
};

} // namespace

QString suggestedProjectPath(const QObject *window)
{
    const QString last = window ? window->property("startDir").toString() : QString();
    if (last.isEmpty())
        return {};
    const QFileInfo info(last);
    return info.path() + u'/' + info.baseName();
}

QString askProjectPath(QWidget *parent, const QString &suggestion)
{
    const QString path =
        QFileDialog::getSaveFileName(parent, Text::tr("Save Data File"), suggestion,
                                     Text::tr("KEO Analyzer Project File (*%1)").arg(kSuffix));
    return path.isEmpty() || !QFileInfo(path).suffix().isEmpty() ? path : path + kSuffix;
}

} // namespace KEO
