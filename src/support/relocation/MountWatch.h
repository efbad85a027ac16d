#pragma once

#include "support/relocation/MountTable.h"

#include <QFile>
#include <QObject>
#include <QString>

#include <optional>

/// Detects when the volume that contains a folder gets another mount point: it was moved, or unmounted and
/// mounted again at any later time. Uses the kernel's notification about changed mounts, without polling.
/// Main thread only.
class MountWatch : public QObject {
    Q_OBJECT

public:
    /// `descriptor` is an open descriptor of the folder, used only in the constructor.
    explicit MountWatch(int descriptor, QObject* parent = nullptr);

Q_SIGNALS:
    void renamed(const QString& oldVolume, const QString& newVolume);

private:
    void checkMount();

    QFile m_table;
    std::optional<Mount> m_volume;
};
