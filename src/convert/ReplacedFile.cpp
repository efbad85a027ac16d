#include "convert/ReplacedFile.h"

#include "support/base/Files.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

ReplacedFile::ReplacedFile(QString path) : m_path(std::move(path)) {
    const QFileInfo file(m_path);
    if (!file.exists()) return;
    const QString name = files::fittingFileName(u'.' + file.fileName(), ".replaced");
    m_asidePath = files::uniqueFile(file.path() + u'/' + name);
}

void ReplacedFile::moveAside() {
    if (!m_asidePath.isEmpty() && !QFile::rename(m_path, m_asidePath)) m_asidePath.clear();
}

void ReplacedFile::restore() {
    restore(m_path, m_asidePath);
    m_asidePath.clear();
}

void ReplacedFile::discard() {
    if (!m_asidePath.isEmpty()) QFile::remove(m_asidePath);
    m_asidePath.clear();
}

QString ReplacedFile::keep() {
    const QString aside = std::exchange(m_asidePath, {});
    if (aside.isEmpty()) return {};
    const QString kept = files::uniqueFile(m_path);
    return QFile::rename(aside, kept) ? kept : aside;
}

void ReplacedFile::restore(const QString& path, const QString& asidePath) {
    if (asidePath.isEmpty() || !files::fileExists(asidePath)) return;
    QFile::remove(path);
    QFile::rename(asidePath, path);
}
