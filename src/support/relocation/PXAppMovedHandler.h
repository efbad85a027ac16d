#pragma once

#include "support/base/ApplicationInfo.h"
#include "support/processes/Dispatch.h"
#include "support/relocation/MoveWatch.h"
#include "support/relocation/NewInstance.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class MountWatch;

/// Handles a new mount point of the volume that contains the application.
class PXAppVolumeRenamedObserver {
public:
    /// Reports that a volume is now at `newVolume`. Does nothing unless it contains the application.
    void watch(const QString& oldVolume, const QString& newVolume) const;

    QString path;  ///< The application folder at the start.
    /// Called with the application folder's new path.
    std::function<void(const QString& newPath)> moved;
};

/// A running application that is moved no longer finds its resources. This class detects the move, informs
/// the user, who cannot decline, and restarts the application from its new place. Only the first move is
/// handled. Main thread only.
class PXAppMovedHandler : public QObject {
    Q_OBJECT

public:
    struct Restart {
        /// Ends this instance in any case, and runs `launch` as soon as this instance no longer blocks a new
        /// one. May return before that.
        std::function<void(const QString& newPath, Block launch)> giveWay;
        /// Starts the application in the folder `newPath`; returns false on failure. An empty path: the
        /// folder no longer exists.
        std::function<bool(const QString& newPath)> launch = newinstance::launch;
    };

    static constexpr int kLatencyMilliseconds = 3000;

    /// Observes while the returned object lives.
    static std::unique_ptr<PXAppMovedHandler> startMoveObservation(
        Restart restart, const QString& bundle = ApplicationInfo::bundlePath(),
        int latencyMilliseconds = kLatencyMilliseconds);
    ~PXAppMovedHandler() override;

    /// Handles a move; `flags` are those of MoveWatch.
    void MoveCallbackFunction(quint32 flags);

private:
    PXAppMovedHandler(Restart restart, const QString& bundle, int latencyMilliseconds);
    void follow(const QString& newPath) const;
    void offerRestart(const QString& newPath);

    const Restart m_restart;
    const MoveWatch m_moveWatch;
    std::unique_ptr<MountWatch> m_mountWatch;
    PXAppVolumeRenamedObserver m_volumeObserver;
    bool m_isOffered = false;
};
