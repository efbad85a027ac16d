#include "convert/Progress.h"

#include "support/base/Text.h"

#include <QFile>

#include <algorithm>

namespace progress {

QList<double> positions(const QByteArray& chunk) {
    constexpr QStringView kMark = u"out_time_ms=";
    constexpr double kMicroseconds = 1'000'000;
    QList<double> result;
    const QString text = QString::fromUtf8(chunk);
    const auto lines = text::lines(text);
    for (const QStringView line : lines) {
        // "N/A" until the first packet is written, with newer versions of the tool also later.
        bool isNumber = false;
        const qlonglong position =
            line.startsWith(kMark) ? line.sliced(kMark.size()).toLongLong(&isNumber) : 0;
        if (isNumber) result.append(static_cast<double>(position) / kMicroseconds);
    }
    return result;
}

std::optional<double> percent(double seconds, std::optional<qint32> runtimeSeconds) {
    if (runtimeSeconds.value_or(0) <= 0) return std::nullopt;
    return std::clamp(seconds / *runtimeSeconds * 100, 0.0, 100.0);
}

}  // namespace progress

std::optional<double> ProgressFile::readNew() {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(static_cast<qint64>(m_lastFileSize)))
        return std::nullopt;
    QByteArray chunk = file.readAll();
    // An incomplete line is read by the next call.
    chunk.truncate(chunk.lastIndexOf('\n') + 1);
    m_lastFileSize += static_cast<quint64>(chunk.size());

    const QList<double> positions = progress::positions(chunk);
    if (positions.isEmpty()) return std::nullopt;
    m_furthestSeconds = std::max(m_furthestSeconds, *std::max_element(positions.cbegin(), positions.cend()));
    return positions.first();
}
