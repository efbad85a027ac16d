#pragma once

#include "support/relocation/MountTable.h"

#include <QFile>
#include <QObject>
#include <QString>

#include <optional>

/// Notices when the volume that holds a folder gets another mount point: moved there, or detached and mounted
/// again, however much later. Idle, nothing wakes up: the kernel tells when any mount changed. Main thread
/// only.
class MountWatch : public QObject {
    Q_OBJECT

public:
    /// `descriptor` is the folder's; it is needed only now.
    explicit MountWatch(int descriptor, QObject* parent = nullptr);

Q_SIGNALS:
    void renamed(const QString& oldVolume, const QString& newVolume);

private:
    void look();

    QFile m_table;
    std::optional<Mount> m_volume;
};
