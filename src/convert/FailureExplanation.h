#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Why a job failed, from the words of the tool and of the job itself.
namespace failure {

// Reasons that the job notes in its output when the tool cannot say them.
inline constexpr QLatin1StringView kUserRemoved("USER_REMOVED");
inline constexpr QLatin1StringView kFreeSpace("FREE_SPACE");
inline constexpr QLatin1StringView kToolMissing("TOOL_MISSING");
inline constexpr QLatin1StringView kTruncated("SOURCE_TRUNCATED");
inline constexpr QLatin1StringView kOutputIncomplete("OUTPUT_INCOMPLETE");
inline constexpr QLatin1StringView kSubtitlesLost("SUBTITLES_LOST");

struct Facts {
    QString output;         ///< What the job collected.
    QStringList arguments;  ///< What the tool got.
    bool embeddedSubtitlesWereUsed = false;
    bool hasSubtitleFile = false;
};

struct Explanation {
    QString title;
    QString message;
    bool offersSupport = false;  ///< Nothing is known: the user may send the details to support.
};

Explanation explain(const Facts& facts);

/// The explanation for a full disk, which is told as soon as the job ends.
Explanation noSpaceLeft();
bool saysNoSpaceLeft(const QString& output);

/// Whether explain() looks for something that stands in this line.
bool explainsSomething(QStringView line);

/// The tool ends with status 0 also where it could not read its source to the end or write its output whole.
/// The reason to note for such a run, from its words; nothing: it succeeded. `convertedSeconds` is how far
/// the output got; a source of which only the index at the end is cut off is whole for this purpose.
std::optional<QString> whyNotFinished(const QString& output, double convertedSeconds,
                                      std::optional<qint32> runtimeSeconds);

}  // namespace failure
