#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

/// The settings on disk: one JSON object, UTF-8, readable by people. Types that JSON lacks are wrapped in an
/// object with one marked key ("$data", "$url", "$real", "$date"), so that every value keeps its type.
/// Callable from any thread.
namespace settingsfile {

QByteArray encoded(const QVariantMap& settings);
/// Null if the bytes are not such a file.
std::optional<QVariantMap> decoded(const QByteArray& bytes);

enum class ReadResult { Read, Missing, Unreadable, Damaged };
ReadResult read(const QString& path, QVariantMap& settings);

/// Replaces the file atomically: writes it completely, onto the disk, or not at all. Creates missing folders.
/// On failure returns false with the reason in `error`, and the old file is unchanged. The caller holds the
/// lock of the settings.
bool write(const QString& path, const QVariantMap& settings, QString& error);

/// What processes that were killed in write() have left beside the file; or one writes at the moment.
QStringList unfinishedFiles(const QString& path);

}  // namespace settingsfile
