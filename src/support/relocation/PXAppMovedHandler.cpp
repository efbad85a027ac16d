#include "support/relocation/PXAppMovedHandler.h"

#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/relocation/MountWatch.h"

#include <QPointer>

void PXAppVolumeRenamedObserver::watch(const QString& oldVolume, const QString& newVolume) const {
    if (oldVolume.isEmpty() || !files::isAtOrBelow(path, oldVolume)) return;
    logInformation("Info: volume rename detection triggered, offering to restart app");
    moved(files::withFolderMoved(path, oldVolume, newVolume));
}

std::unique_ptr<PXAppMovedHandler> PXAppMovedHandler::startMoveObservation(Restart restart,
                                                                           const QString& bundle,
                                                                           int latencyMilliseconds) {
    return std::unique_ptr<PXAppMovedHandler>(
        new PXAppMovedHandler(std::move(restart), bundle, latencyMilliseconds));
}

PXAppMovedHandler::PXAppMovedHandler(Restart restart, const QString& bundle, int latencyMilliseconds)
    : m_restart(std::move(restart)), m_moveWatch(bundle, latencyMilliseconds) {
    const QString path = m_moveWatch.currentPath();  // Canonical, to compare with later values.
    m_volumeObserver = {path.isEmpty() ? bundle : path,
                        [this](const QString& newPath) { offerRestart(newPath); }};
    connect(&m_moveWatch, &MoveWatch::mayHaveMoved, this, [this] { follow(m_moveWatch.currentPath()); });
    connect(&m_moveWatch, &MoveWatch::reported, this, &PXAppMovedHandler::MoveCallbackFunction);
    if (m_moveWatch.descriptor() < 0) return;
    m_mountWatch = std::make_unique<MountWatch>(m_moveWatch.descriptor());
    connect(m_mountWatch.get(), &MountWatch::renamed, this,
            [this](const QString& oldVolume, const QString& newVolume) {
                m_volumeObserver.watch(oldVolume, newVolume);
            });
}

PXAppMovedHandler::~PXAppMovedHandler() = default;

void PXAppMovedHandler::MoveCallbackFunction(quint32 flags) {
    // Test for equality: with other flags set, too, the folder is not safe to restart from.
    if (flags != MoveWatch::kRootChanged) return;
    const QString newPath = m_moveWatch.currentPath();
    // Moved away and back, or a parent folder was: the path is unchanged, and a restart would only cancel
    // conversions.
    if (newPath == m_volumeObserver.path) return;
    logInformation("Info: move detection triggered, offering to restart app");
    offerRestart(newPath);
}

/// Queued conversions start tools while the alert is open; without the new path, they would all fail.
void PXAppMovedHandler::follow(const QString& newPath) const {
    if (!newPath.isEmpty()) ApplicationInfo::followMove(m_volumeObserver.path, newPath);
}

void PXAppMovedHandler::offerRestart(const QString& newPath) {
    if (std::exchange(m_isOffered, true)) return;
    follow(newPath);
    const QPointer<PXAppMovedHandler> self(this);
    alert_apptitled(
        Texts::tr("%1 has been moved, but applications should never be moved while they are running.")
            .arg(ApplicationInfo::name()),
        Texts::tr("Restart %1").arg(ApplicationInfo::name()));
    if (!self) return;
    // The folder may have been moved again before the user answered.
    const QString now = m_moveWatch.currentPath();
    const QString place = now.isEmpty() ? newPath : now;
    m_restart.giveWay(place, [launch = m_restart.launch, place] {
        if (launch(place)) return;
        alert_apptitled(
            Texts::tr("%1 could not restart itself. Please do so yourself.").arg(ApplicationInfo::name()),
            Texts::tr("Quit"));
    });
}
