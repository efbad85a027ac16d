#pragma once

#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What becomes of one stream of the movie, or of the subtitle file.
struct PlannedTrack {
    enum class Kind { Video, Audio, Subtitle, Attachment, Data };
    enum class Action { Copied, Converted, LeftOut };

    std::optional<int> stream;  ///< The stream's number in the movie; empty: the subtitle file.
    Kind kind = Kind::Data;
    QString codec;     ///< The tool's name.
    QString language;  ///< As in the movie; may be empty.
    QString title;     ///< As in the movie; may be empty.
    Action action = Action::LeftOut;
    QString to;      ///< What it is converted into, in words; empty unless it is converted.
    QString reason;  ///< Why it is left out, in words; empty unless it is.
    /// The number of the stream in the output; empty if it is left out.
    std::optional<int> output;

    bool operator==(const PlannedTrack&) const = default;
};

/// What a conversion will do with a movie. A value; any thread.
struct ConversionPlan {
    /// In the order of the streams, the subtitle file last. A stream that is carried twice is listed twice.
    QList<PlannedTrack> tracks;
    bool carriesChapters = false;
};
