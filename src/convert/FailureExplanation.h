#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Explains why a job failed, from the output of the tool and the notes of the job. Pure; any thread.
namespace failure {

// Reasons that the job adds to its output for failures that the tool does not report.
inline constexpr QLatin1StringView kUserRemoved("USER_REMOVED");
inline constexpr QLatin1StringView kFreeSpace("FREE_SPACE");
inline constexpr QLatin1StringView kToolMissing("TOOL_MISSING");
inline constexpr QLatin1StringView kTruncated("SOURCE_TRUNCATED");
inline constexpr QLatin1StringView kOutputIncomplete("OUTPUT_INCOMPLETE");
inline constexpr QLatin1StringView kSubtitlesLost("SUBTITLES_LOST");

struct Facts {
    QString output;         ///< The collected output of the job.
    QStringList arguments;  ///< The arguments of the tool.
    bool embeddedSubtitlesWereUsed = false;
    bool hasSubtitleFile = false;
};

struct Explanation {
    QString title;
    QString message;
    bool offersSupport = false;  ///< The reason is unknown: the user may send the details to support.
};

Explanation explain(const Facts& facts);

/// The explanation for a full disk, which is shown as soon as the job ends.
Explanation noSpaceLeft();
bool saysNoSpaceLeft(const QString& output);

/// Whether the line contains a text that explain() searches for.
bool explainsSomething(QStringView line);

/// The tool also exits with status 0 when it could not read its source to the end or could not write its
/// output completely. Returns the reason to note for such a run, from its output; empty: it succeeded.
/// `convertedSeconds` is the length of the output; a source that lacks only the index at its end counts as
/// complete.
std::optional<QString> whyNotFinished(const QString& output, double convertedSeconds,
                                      std::optional<qint32> runtimeSeconds);

}  // namespace failure
