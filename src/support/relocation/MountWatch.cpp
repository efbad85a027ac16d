#include "support/relocation/MountWatch.h"

#include "support/base/Files.h"
#include "support/base/Log.h"

#include <QSocketNotifier>

#include <algorithm>

namespace {

QList<Mount> currentTable() {
    return mounttable::parsed(files::contents("/proc/self/mountinfo").value_or(QByteArray()));
}

/// The identifier of the mount through which an open file was reached.
int mountId(int descriptor) {
    const QByteArray facts =
        files::contents("/proc/self/fdinfo/" + QString::number(descriptor)).value_or(QByteArray());
    for (const QByteArray& line : facts.split('\n')) {
        if (line.startsWith("mnt_id:")) return line.split(':').last().trimmed().toInt();
    }
    return -1;
}

}  // namespace

MountWatch::MountWatch(int descriptor, QObject* parent) : QObject(parent), m_table("/proc/self/mountinfo") {
    // Changes are reported from open() on, so open the table before reading it.
    const bool isOpen = m_table.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    const QList<Mount> table = currentTable();
    const auto own = std::ranges::find(table, mountId(descriptor), &Mount::id);
    if (!isOpen || own == table.end()) {
        logError("Error: a new name of the application's volume will not be noticed: its mount is not known");
        return;
    }
    m_volume = *own;
    const auto* notifier = new QSocketNotifier(m_table.handle(), QSocketNotifier::Exception, this);
    connect(notifier, &QSocketNotifier::activated, this, &MountWatch::checkMount);
}

void MountWatch::checkMount() {
    const auto now = mounttable::found(*m_volume, currentTable());
    if (!now) return;  // Unmounted; it may be mounted elsewhere later.
    const Mount before = *std::exchange(m_volume, now);
    if (before.point != now->point)
        Q_EMIT renamed(QFile::decodeName(before.point), QFile::decodeName(now->point));
}
