#include "projectboxes.h"

#include <base/logging.h>
#include <widgets/messagebox.h>

namespace KEO {

void ProjectBoxes::setWindow(QWidget *window)
{
    m_window = window;
    m_title = window ? window->windowTitle() : QString();
}

void ProjectBoxes::showError(const QString &text)
{
    if (m_openErrors.contains(text)) {
        qCDebug(lcProject).noquote() << "error not shown a second time:" << text;
        return;
    }
    m_openErrors.insert(text);
    const QPointer<ProjectBoxes> self(this);
    showBox(QMessageBox::Critical, m_window, tr("Error"), text);
    if (self)
        m_openErrors.remove(text);
}

void ProjectBoxes::showWarning(const QString &text)
{
    showBox(QMessageBox::Warning, m_window, tr("Warning"), text);
}

void ProjectBoxes::showInformation(const QString &text)
{
    if (!text.isEmpty())
        showBox(QMessageBox::Information, m_window, m_title, text);
}

} // namespace KEO
