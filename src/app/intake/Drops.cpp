#include "app/intake/Drops.h"

#include <QDir>
#include <QFileInfo>

int Drops::add(const QStringList& files, const QStringList& folders, Origin origin) {
    QStringList cleaned;
    for (const QString& folder : folders)
        cleaned.append(QDir::cleanPath(folder));
    const int number = ++m_lastNumber;
    m_folders.insert(number, cleaned);
    if (origin == Origin::WatchFolder) m_arrivals.insert(number);
    for (const QString& file : files)
        m_numbers.insert(file, number);
    return number;
}

void Drops::clear() {
    m_folders.clear();
    m_numbers.clear();
    m_arrivals.clear();
}

Drops::Origin Drops::originOf(const QString& file) const {
    return m_arrivals.contains(numberOf(file)) ? Origin::WatchFolder : Origin::User;
}

QStringList Drops::folders() const {
    QStringList all;
    for (const QStringList& folders : m_folders)
        all += folders;
    return all;
}

QString Drops::folderOf(const QString& file) const {
    const int number = numberOf(file);
    if (number == 0) return {};
    const QString cleaned = QDir::cleanPath(file);
    for (const QString& folder : m_folders.value(number)) {
        const QString inside = folder.endsWith(u'/') ? folder : folder + u'/';
        if (cleaned.startsWith(inside))
            return QDir(QFileInfo(folder).path()).relativeFilePath(QFileInfo(cleaned).path());
    }
    return {};
}
