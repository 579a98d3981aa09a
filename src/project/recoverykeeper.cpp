#include "recoverykeeper.h"

#include "projectfiles.h"
#include "wavetabs.h"

#include <base/logging.h>
#include <capture/capturemanager.h>
#include <design/design.h>
#include <wave/wavemonitorwidget.h>

#include <QFileInfo>
#include <QHashFunctions>

#include <utility>

namespace KEO {

namespace {

constexpr int kRest = 1000;       // ms after a window, in which the next one may come
constexpr int kAutoRest = 60'000; // ms between two rounds that are kept

} // namespace

RecoveryKeeper::RecoveryKeeper(const ProjectParts &parts, const ProjectFiles &files,
                               QObject *parent)
    : QObject(parent), m_parts(parts), m_files(files)
{
    m_later.setSingleShot(true);
    connect(&m_later, &QTimer::timeout, this,
            [this] { write(dataFileText(windowsToSave(m_parts))); });
    connect(&m_idle, &QTimer::timeout, this, &RecoveryKeeper::step);
    connect(&parts.design.manager(), &CaptureManager::statusChanged, this,
            &RecoveryKeeper::runEnded);
}

void RecoveryKeeper::captured()
{
    if (!m_about)
        beginCapture();
    m_about->time = QDateTime::currentDateTime();
    if (m_parts.design.manager().autorun() == -1)
        m_later.start(kRest);
    else if (!m_later.isActive())
        m_later.start(kAutoRest);
}

void RecoveryKeeper::beginCapture()
{
    m_about.emplace();
    m_about->description = m_files.description();
    m_about->descriptionState = m_files.descriptionState();
    m_about->savedAs = m_files.projectFile();
    m_about->deviceModel = m_parts.design.manager().deviceName();
    m_about->namesCores = m_parts.design.traits().namesCores;
    m_description = m_parts.design.descriptionText();
}

void RecoveryKeeper::runEnded(bool isBusy)
{
    if (!isBusy && m_later.isActive())
        m_later.start(kRest);
}

void RecoveryKeeper::opened(const Recovery &entry)
{
    m_about = entry;
    m_description = m_parts.design.descriptionText();
    m_hash = qHash(dataFileText(windowsToSave(m_parts)));
}

void RecoveryKeeper::saved()
{
    m_later.stop();
    m_idle.stop();
    m_writer.reset();
    if (m_about)
        m_store.remove(m_about->project);
    m_about.reset();
}

void RecoveryKeeper::finish()
{
    if (m_about && !m_parts.waves.isEmpty()) {
        const QByteArray dataFile = dataFileText(windowsToSave(m_parts));
        const bool isWritten = m_writer || QFileInfo::exists(m_about->project);
        if (!isWritten || qHash(dataFile) != m_hash)
            write(dataFile);
        if (m_writer)
            end();
    }
    m_later.stop();
    m_about.reset();
}

void RecoveryKeeper::write(const QByteArray &dataFile)
{
    m_later.stop();
    if (!m_about || m_parts.waves.isEmpty())
        return;
    m_about->windows = placesOf(windowsToSave(m_parts));
    m_hash = qHash(dataFile);
    m_writer = std::make_unique<RecoveryWriter>(m_store, *m_about, m_description, dataFile);
    m_idle.start(0);
}

void RecoveryKeeper::step()
{
    if (!m_writer->step())
        end();
}

void RecoveryKeeper::end()
{
    m_idle.stop();
    const Result<QString> written = std::exchange(m_writer, nullptr)->finish();
    if (written) {
        m_store.remove(std::exchange(m_about->project, *written)); // what it was before
        return;
    }
    qCDebug(lcProject).noquote() << "recovery:" << written.error().message;
    if (!std::exchange(m_hasTold, true))
        Q_EMIT told(tr("The capture is not kept for recovery: %1").arg(written.error().message));
}

} // namespace KEO
