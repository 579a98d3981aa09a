#include "commandcopy.h"

#include "configpage.h"
#include "programmerlink.h"
#include "statusline.h"

#include <base/siblingprogram.h>
#include <design/capturecommand.h>
#include <design/design.h>

#include <QAction>
#include <QClipboard>
#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QWidget>

namespace KEO {

namespace {

/// By its name alone if that finds the one beside this program.
QString captureProgram()
{
    const QString name = QStringLiteral("signalscope-capture");
    const QFileInfo own(programPath(QCoreApplication::applicationDirPath(), name));
    const QFileInfo found(QStandardPaths::findExecutable(name));
    const bool isFound = found.canonicalFilePath() == own.canonicalFilePath();
    return isFound || !own.exists() ? name : own.absoluteFilePath();
}

QList<int> numbersOf(const QVariantList &chain)
{
    QList<int> codes;
    for (const QVariant &code : chain)
        codes.append(code.toInt());
    return codes;
}

/// The one that a user has asked for, for the sake of his cable. Otherwise the command goes as fast
/// as it can.
int chosenPace(const CapturePace &pace)
{
    return pace.sectionPause == CapturePace().sectionPause ? 0 : pace.sectionPause;
}

} // namespace

CommandCopy::CommandCopy(const ProjectParts &parts, QObject *parent)
    : QObject(parent), m_parts(parts), m_action(new QAction(tr("Copy as Command"), this))
{
    m_action->setObjectName(QStringLiteral("copyCommandAction"));
    m_action->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    m_action->setShortcutVisibleInContextMenu(true);
}

void CommandCopy::enter(QWidget &page, QWidget *window)
{
    page.addAction(m_action);
    page.setContextMenuPolicy(Qt::ActionsContextMenu);
    m_window = window;
    if (window)
        window->addAction(m_action);
}

void CommandCopy::leave()
{
    if (m_window)
        m_window->removeAction(m_action);
}

void CommandCopy::copy(const QString &description, const QString &cable)
{
    if (m_parts.design.isBusy() || description.isEmpty())
        return;
    // Saved, an amount that the page does not offer would be lost.
    m_parts.page.withSettings([&] { copySettings(description, cable); });
}

void CommandCopy::copySettings(const QString &description, const QString &cable)
{
    const Result<RunSettings> settings =
        m_parts.design.runSettings(m_parts.programmer.targetName());
    if (!settings) {
        m_parts.status.tell(tr("No command to copy: %1").arg(settings.error().message));
        return;
    }
    const QStringList arguments =
        captureArguments(*settings, {.program = captureProgram(),
                                     .description = description,
                                     .cable = cable,
                                     .chain = numbersOf(m_parts.programmer.deviceChain()),
                                     .pace = chosenPace(m_parts.design.manager().pace())});
    QGuiApplication::clipboard()->setText(shellCommand(arguments));
    m_parts.status.tell((QStringList(tr("Copied the command.")) + settings->remarks).join(u' '));
}

} // namespace KEO
