#include "devicechooser.h"

#include "programmerlink.h"
#include "statusline.h"

#include <capture/devicemodels.h>
#include <design/design.h>
#include <programmer/devicedatabase.h>

#include <QAction>
#include <QActionGroup>
#include <QInputDialog>
#include <QMenu>
#include <QWidget>

namespace KEO {

namespace {

/// One of which only one counts, whatever submenu it is in.
QAction *addChoice(QActionGroup &choices, QMenu &menu, const QString &text, bool isCurrent)
{
    QAction *action = menu.addAction(QString(text).replace(u'&', QLatin1String("&&")));
    action->setCheckable(true);
    choices.addAction(action);
    action->setChecked(isCurrent);
    return action;
}

} // namespace

DeviceChooser::DeviceChooser(const ProjectParts &parts, QObject *parent)
    : QObject(parent), m_parts(parts), m_action(new QAction(tr("Choose Device…"), this))
{
    m_action->setObjectName(QStringLiteral("chooseDeviceAction"));
    m_action->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_D);
    m_action->setShortcutVisibleInContextMenu(true);
    connect(m_action, &QAction::triggered, this, &DeviceChooser::open);
    m_parts.status.setDeviceAction(m_action);
}

void DeviceChooser::enter(QWidget &page, QWidget *window)
{
    page.addAction(m_action);
    m_window = window;
    if (window)
        window->addAction(m_action);
}

void DeviceChooser::leave()
{
    if (m_window)
        m_window->removeAction(m_action);
    m_window = nullptr;
    delete m_menu;
    delete m_dialog;
}

void DeviceChooser::setEnabled(bool isEnabled)
{
    m_action->setEnabled(isEnabled);
}

/// The first series of a database stands for devices that it does not know.
QList<DeviceChooser::Group> DeviceChooser::groups() const
{
    QList<Group> groups;
    QStringList late = lateModels();
    const std::shared_ptr<const DeviceDatabase> database = m_parts.programmer.database();
    const QStringList series = database ? database->seriesNames().mid(1) : QStringList();
    for (const QString &family : series) {
        const QStringList models = database->deviceNames(family);
        if (!models.isEmpty())
            groups.append({family, models, family});
        for (const QString &model : models)
            late.removeAll(model);
    }
    if (!late.isEmpty())
        groups.append({{}, late, groups.isEmpty() ? QString() : tr("More")});
    return groups;
}

void DeviceChooser::open()
{
    if (!m_window)
        return;
    delete m_menu;
    m_menu = new QMenu(m_window);
    m_menu->setObjectName(QStringLiteral("deviceMenu"));
    m_menu->setAttribute(Qt::WA_DeleteOnClose);
    const QString current = m_parts.design.deviceOfRun(m_parts.programmer.targetName());
    QAction *active = nullptr;
    if (m_parts.design.goesByTarget() && m_parts.programmer.isTableKept()) {
        m_menu->addAction(tr("The device is the one enabled in the programmer"))->setEnabled(false);
    } else {
        active = addGroups(*m_menu, current);
    }
    const QPoint corner = m_parts.status.deviceCorner();
    m_menu->popup(corner - QPoint(m_menu->sizeHint().width(), m_menu->sizeHint().height()));
    if (!active)
        return;
    auto *menu = qobject_cast<QMenu *>(active->parent());
    if (menu != m_menu)
        m_menu->setActiveAction(menu->menuAction());
    menu->setActiveAction(active); // popup() itself would put that one at the corner
}

/// Returns the present choice.
QAction *DeviceChooser::addGroups(QMenu &menu, const QString &current)
{
    auto *choices = new QActionGroup(&menu);
    QAction *active = nullptr;
    for (const Group &group : groups()) {
        QMenu *models = group.title.isEmpty() ? &menu : menu.addMenu(group.title);
        for (const QString &model : group.models) {
            const bool isCurrent = !active && model == current;
            QAction *action = addChoice(*choices, *models, model, isCurrent);
            connect(action, &QAction::triggered, this,
                    [this, family = group.family, model] { Q_EMIT chosen(family, model); });
            if (isCurrent && models != &menu)
                menu.setDefaultAction(models->menuAction());
            if (isCurrent)
                active = action;
        }
    }
    menu.addSeparator();
    const bool isOther = !active && !current.isEmpty();
    QAction *other =
        addChoice(*choices, menu, isOther ? tr("Other (%1)…").arg(current) : tr("Other…"), isOther);
    connect(other, &QAction::triggered, this, [this, current] { askOther(current); });
    QAction *none = addChoice(*choices, menu, tr("Not Known"), current.isEmpty());
    connect(none, &QAction::triggered, this, [this] { Q_EMIT chosen({}, {}); });
    return active ? active : isOther ? other : none;
}

void DeviceChooser::askOther(const QString &current)
{
    m_dialog = new QInputDialog(m_window);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->setWindowTitle(tr("Choose Device"));
    m_dialog->setLabelText(tr("&Model of the device, as -device names it:"));
    m_dialog->setTextValue(current);
    connect(m_dialog, &QInputDialog::textValueSelected, this,
            [this](const QString &text) { Q_EMIT chosen({}, text.trimmed()); });
    m_dialog->open();
}

} // namespace KEO
