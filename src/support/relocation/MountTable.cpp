#include "support/relocation/MountTable.h"

#include <algorithm>

namespace mounttable {

namespace {

bool isOctal(char c) {
    return c >= '0' && c <= '7';
}

/// The kernel escapes blanks, newlines and backslashes as a backslash and three octal digits.
QByteArray unescaped(const QByteArray& text) {
    QByteArray result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '\\' && i + 3 < text.size() && isOctal(text[i + 1]) &&
                              isOctal(text[i + 2]) && isOctal(text[i + 3]);
        if (isEscape) {
            result.append(static_cast<char>(text.mid(i + 1, 3).toInt(nullptr, 8)));
            i += 3;
        } else {
            result.append(text[i]);
        }
    }
    return result;
}

bool isSameVolume(const Mount& a, const Mount& b) {
    return a.device == b.device && a.root == b.root;
}

}  // namespace

QList<Mount> parsed(const QByteArray& mountinfo) {
    // 36 35 98:0 /folder /media/disk rw,noatime master:1 - ext4 /dev/sda1 rw
    enum Field { Id, Parent, Device, Root, Point, Count };
    QList<Mount> table;
    for (const QByteArray& line : mountinfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < Count) continue;
        table.append({fields[Id].toInt(), fields[Device], unescaped(fields[Root]), unescaped(fields[Point])});
    }
    return table;
}

std::optional<Mount> found(const Mount& volume, const QList<Mount>& table) {
    const auto isTheMount = [&](const Mount& mount) {
        return mount.id == volume.id && isSameVolume(mount, volume);
    };
    if (const auto same = std::ranges::find_if(table, isTheMount); same != table.end()) return *same;
    const auto newest = std::find_if(table.rbegin(), table.rend(),
                                     [&](const Mount& mount) { return isSameVolume(mount, volume); });
    return newest == table.rend() ? std::nullopt : std::optional(*newest);
}

}  // namespace mounttable
