#pragma once

#include <QString>

/// A file that the user named to be replaced: kept aside in its folder until its successor is whole, so that
/// a conversion that fails costs nothing.
class ReplacedFile {
public:
    /// Chooses the place for the file at `path`.
    explicit ReplacedFile(QString path);

    /// Where the file is meanwhile; empty: there is none.
    const QString& asidePath() const { return m_asidePath; }
    void moveAside();

    /// Brings the file back; what is at its place by then is deleted.
    void restore();
    /// The successor is whole: deletes the file.
    void discard();

    /// restore() for a file that an instance which is gone had moved aside.
    static void restore(const QString& path, const QString& asidePath);

private:
    const QString m_path;
    QString m_asidePath;
};
