#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

/// The settings on disk: one JSON object, UTF-8, readable by people. Types that JSON lacks are wrapped in an
/// object with one marked key ("$data", "$url", "$real", "$date"), so that every value comes back as what it
/// was.
namespace settingsfile {

QByteArray encoded(const QVariantMap& settings);
/// Nothing when the bytes are not such a file.
std::optional<QVariantMap> decoded(const QByteArray& bytes);

enum class ReadResult { Read, Missing, Unreadable, Damaged };
ReadResult read(const QString& path, QVariantMap& settings);

/// Replaces the file by a whole new one: whatever happens meanwhile, the old or the new one is there. Makes
/// missing folders. False, with the reason in `error`: the old file is untouched.
bool write(const QString& path, const QVariantMap& settings, QString& error);

}  // namespace settingsfile
