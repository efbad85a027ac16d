#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// What shows without reading that a file is the one that it was: its size and the time of its last change. A
/// value; any thread.
struct FileStamp {
    qint64 size = 0;     ///< Bytes
    qint64 changed = 0;  ///< Nanoseconds since 1970; whole seconds on volumes that know no more.

    /// Of the file to which the path leads; empty if there is none.
    static std::optional<FileStamp> of(const QString& path);

    /// Since the last change; below 0 where another machine's clock is ahead.
    qint64 secondsAgo() const;

    /// "size changed", both in decimal digits.
    QByteArray toText() const;
    static std::optional<FileStamp> fromText(const QByteArray& text);

    /// Times of whole seconds are compared as such, since copying to another volume may cut them.
    bool operator==(const FileStamp& other) const;
};
