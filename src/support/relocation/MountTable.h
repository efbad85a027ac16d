#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// A mounted volume: one line of mountinfo, see proc(5).
struct Mount {
    int id = 0;         ///< Reused by the kernel after the mount was removed.
    QByteArray device;  ///< "8:1"
    QByteArray root;    ///< The folder of the device that is mounted at `point`.
    QByteArray point;

    bool operator==(const Mount&) const = default;
};

/// Parses and searches the mount table. Callable from any thread.
namespace mounttable {

/// Parses mountinfo; skips invalid lines.
QList<Mount> parsed(const QByteArray& mountinfo);

/// Finds `volume` in a later table: the same mount at any mount point, else the newest of the same device and
/// root. Null: it is not mounted.
std::optional<Mount> found(const Mount& volume, const QList<Mount>& table);

}  // namespace mounttable
