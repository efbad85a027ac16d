#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Reads the file into which the tool writes its progress: lines of "name=value", appended in blocks. Main
/// thread only.
class ProgressFile {
public:
    /// The file does not have to exist yet.
    explicit ProgressFile(QString path) : m_path(std::move(path)) {}

    const QString& path() const { return m_path; }

    /// Reads what was appended since the last call. Returns the first position in the movie that it contains,
    /// in seconds; empty: it contains none.
    std::optional<double> readNew();

    /// The highest position, in seconds, of all calls.
    double furthestSeconds() const { return m_furthestSeconds; }

private:
    QString m_path;
    quint64 m_lastFileSize = 0;
    double m_furthestSeconds = 0;
};

namespace progress {

/// The positions in a part of the file, in order: the values of "out_time_ms=", converted from microseconds
/// to seconds.
QList<double> positions(const QByteArray& chunk);

/// The percentage for a position, 0 to 100; empty if the running time is unknown.
std::optional<double> percent(double seconds, std::optional<qint32> runtimeSeconds);

}  // namespace progress
