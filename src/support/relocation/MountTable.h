#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// A volume in its place: a line of proc(5)'s mountinfo.
struct Mount {
    int id = 0;         ///< Given anew once the mount is gone for good.
    QByteArray device;  ///< "8:1"
    QByteArray root;    ///< The folder on the device that is seen at `point`.
    QByteArray point;

    bool operator==(const Mount&) const = default;
};

/// Which volumes are where.
namespace mounttable {

/// The lines of mountinfo; such as are no mounts are passed over.
QList<Mount> parsed(const QByteArray& mountinfo);

/// Where `volume` is by a later table: the very mount, at whatever place, else the newest of the same device
/// and folder. Nothing: it is nowhere.
std::optional<Mount> found(const Mount& volume, const QList<Mount>& table);

}  // namespace mounttable
