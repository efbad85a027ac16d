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

/// Takes note when the volume that holds the application gets another mount point.
class PXAppVolumeRenamedObserver {
public:
    /// A volume is at `newVolume` now. Nothing happens unless it holds the application.
    void watch(const QString& oldVolume, const QString& newVolume) const;

    QString path;  ///< The application folder at the start.
    /// Called with the application folder's new path.
    std::function<void(const QString& newPath)> moved;
};

/// An application that is moved while it runs does not find what belongs to it any more. This notices it,
/// tells the user, who cannot decline, and has the application started again from the new place. It happens
/// once; what is noticed after that changes nothing. Main thread only.
class PXAppMovedHandler : public QObject {
    Q_OBJECT

public:
    struct Restart {
        /// Ends this instance, whatever comes of the other one, and runs `launch` when nothing of this one
        /// stands in the way of it any more. May return before.
        std::function<void(const QString& newPath, Block launch)> giveWay;
        /// Starts the application in the folder `newPath`; false: it cannot be. Empty: there is no such
        /// folder.
        std::function<bool(const QString& newPath)> launch = newinstance::launch;
    };

    static constexpr int kLatencyMilliseconds = 3000;

    /// Observes as long as the result lives.
    static std::unique_ptr<PXAppMovedHandler> startMoveObservation(
        Restart restart, const QString& bundle = ApplicationInfo::bundlePath(),
        int latencyMilliseconds = kLatencyMilliseconds);
    ~PXAppMovedHandler() override;

    /// Something moved; `flags` are MoveWatch's.
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
