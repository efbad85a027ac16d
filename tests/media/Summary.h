#pragma once

#include "media/Reading.h"

#include <QTemporaryFile>

/// What a reading found in one line: of each track the frames, the times, holes and lines; behind "!" the
/// damage.
inline QString summary(const media::Reading& reading) {
    const auto span = [](double from, double to) {
        return QString(" %1-%2").arg(from, 0, 'f', 2).arg(to, 0, 'f', 2);
    };
    QStringList parts;
    for (const media::Track& track : reading.tracks) {
        QString text = QString::number(track.frames);
        if (track.leadingFrames > 0) text += QString(" lead %1").arg(track.leadingFrames);
        if (track.start) text += span(*track.start, track.end.value_or(-1));
        for (const media::Hole& hole : track.holes)
            text += " hole" + span(hole.from, hole.to);
        if (track.skippedFrames > 0) text += QString(" skipped %1").arg(track.skippedFrames);
        for (const media::Line& line : track.lines)
            text += (line.visible ? " line" : " blank") + span(line.start, line.end());
        parts += text;
    }
    for (const media::Damage& damage : reading.damage)
        parts += QString("!") + media::name(damage.fault) + span(damage.from, damage.to);
    if (reading.problem != media::Problem::None) parts += "problem";
    return parts.join("; ");
}

/// A file with these bytes while it lives.
class BytesInFile {
public:
    explicit BytesInFile(const QByteArray& bytes) {
        if (!m_file.open() || m_file.write(bytes) != bytes.size() || !m_file.flush())
            qFatal("cannot write a file");
    }
    QString path() const { return m_file.fileName(); }

private:
    QTemporaryFile m_file;
};
