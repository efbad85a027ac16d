#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Follows the file into which the tool writes its progress: lines of "name=value", appended in blocks.
class ProgressFile {
public:
    /// The file need not exist yet.
    explicit ProgressFile(QString path) : m_path(std::move(path)) {}

    const QString& path() const { return m_path; }

    /// Reads what came since the last call. The position in the movie that it names first, in seconds;
    /// nothing when it names none.
    std::optional<double> readNew();

    /// The furthest position, in seconds, that any call saw.
    double furthestSeconds() const { return m_furthestSeconds; }

    void remove();

private:
    QString m_path;
    quint64 m_lastFileSize = 0;
    double m_furthestSeconds = 0;
};

namespace progress {

/// The positions that a piece of the file names, in order: values of "out_time_ms=", which are microseconds.
QList<double> positions(const QByteArray& chunk);

/// The percentage for a position, 0 to 100; nothing where the running time is not known.
std::optional<double> percent(double seconds, std::optional<qint32> runtimeSeconds);

}  // namespace progress
