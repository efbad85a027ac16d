#pragma once

#include <QString>
#include <QUrl>

/// The URL of a local file, kept as its path: a QUrl takes ten times the memory and copies the path whenever
/// it is asked for it. A value; any thread.
class FileUrl {
public:
    FileUrl() = default;
    /// Empty for a URL of anything else.
    FileUrl(const QUrl& url) : m_path(url.toLocalFile()) {}
    static FileUrl fromLocalFile(const QString& path) {
        FileUrl url;
        url.m_path = path;
        return url;
    }

    const QString& toLocalFile() const { return m_path; }
    QUrl toUrl() const { return QUrl::fromLocalFile(m_path); }
    /// The last component of the path.
    QString fileName() const { return m_path.sliced(m_path.lastIndexOf(u'/') + 1); }
    bool isEmpty() const { return m_path.isEmpty(); }

    bool operator==(const FileUrl&) const = default;

private:
    QString m_path;
};
