#pragma once

#include <QList>
#include <QString>

class ConversionJob;

/// A sentence about a job.
struct DetailMessage {
    enum class Kind { Plain, Good, Warning, Problem };
    Kind kind = Kind::Plain;
    QString text;  ///< May have several lines.

    bool operator==(const DetailMessage&) const = default;
};

/// What becomes, or became, of one track of the movie, of the subtitle file, of the chapters or the title.
struct DetailTrack {
    QString kind;     ///< "Sound"
    QString source;   ///< "English AC3 5.1 “Director's commentary”"
    QString outcome;  ///< "becomes AAC stereo, 128 kb/s", "left out"
    QString remark;   ///< Why it is left out, or what the output holds of it; may be empty.
    bool isLeftOut = false;
    bool isIncomplete = false;  ///< The output holds less than the source.

    bool operator==(const DetailTrack&) const = default;
};

struct DetailFile {
    QString role;  ///< "From"
    QString path;
    QString size;  ///< May be empty.

    bool operator==(const DetailFile&) const = default;
};

/// Everything that is known about a job, in words for the user, translated. A value.
struct JobDetails {
    QString name;                   ///< Of the movie.
    QString state;                  ///< In one word.
    QList<DetailMessage> messages;  ///< What was found, what went wrong, and the warnings of the probe.
    QList<DetailTrack> tracks;      ///< Empty for a movie that could not be probed.
    QList<DetailFile> files;
    QString commandLine;  ///< Empty before the start.
    QString said;         ///< What the tool printed; may be empty.

    bool operator==(const JobDetails&) const = default;
};

/// Nothing in it changes with the progress of the job. Main thread only.
JobDetails jobDetails(const ConversionJob& job);

/// For the clipboard. Pure; any thread.
QString plainText(const JobDetails& details);
