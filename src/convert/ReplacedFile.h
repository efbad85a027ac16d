#pragma once

#include <QString>

/// An existing file that the user chose to replace. It is moved aside within its folder until the new file is
/// complete, so that a failed conversion loses nothing. Main thread only.
class ReplacedFile {
public:
    /// Chooses the temporary path for the file at `path`.
    explicit ReplacedFile(QString path);

    /// The temporary path of the file; empty: there is no file to keep.
    const QString& asidePath() const { return m_asidePath; }
    void moveAside();

    /// Moves the file back; a file at its place is deleted.
    void restore();
    /// The new file is complete: deletes the old one.
    void discard();

    /// The new file is there, but is not a full replacement: gives the old one a free name beside it and
    /// returns its path; empty: there is none.
    QString keep();

    /// restore() for a file that an instance which no longer runs had moved aside.
    static void restore(const QString& path, const QString& asidePath);

private:
    const QString m_path;
    QString m_asidePath;
};
