#pragma once

#include "convert/SpaceCheck.h"
#include "convert/proof/Proof.h"
#include "tool/ToolExit.h"

#include <QLatin1StringView>
#include <QString>

#include <optional>

/// How a conversion ended, decided once: from the end of the tool and its complete output, or before the tool
/// was started. A value; any thread.
struct RunEnding {
    enum class Kind {
        Succeeded,
        // Before the tool is started.
        SourceGone,
        VolumeTooSmall,         ///< The volume cannot store a file of the source's size; see `space`.
        PrivateDataUnwritable,  ///< The note of the run's files could not be written; see `trouble`.
        NameTaken,              ///< Another run writes the output.
        // Afterwards.
        ToolMissing,      ///< The tool could not be started; see exit.startError.
        ToolFailed,       ///< For another reason, which only its output may show.
        NoSpace,          ///< The volume was full.
        Incomplete,       ///< The output was not written to its end: trouble of its volume.
        SourceTruncated,  ///< The source could not be read to its end.
        SubtitlesLost,    ///< Subtitles could not be decoded.
        MuchLost,         ///< The proof found that much of the movie is missing in the output.
        Stalled,          ///< The tool did nothing for as long as `StallLimit` allows.
        Interrupted,      ///< The user or the session ended the application.
    };

    Kind kind = Kind::Succeeded;
    spacecheck::Verdict space = spacecheck::Verdict::Enough;
    ToolExit exit;
    double convertedSeconds = 0;  ///< The length of the output, as far as the tool reported it.
    /// Succeeded although the source is truncated, because the user wants to keep what is left.
    bool isDamaged = false;
    /// The output and the note of it are on the disk: older files may be deleted.
    bool isDurable = false;
    QString trouble;  ///< What could not be written, and the system's reason; empty: the tool reported it.
    std::optional<Receipt> receipt;  ///< Empty: no proof was made.
    proof::Signs signs;              ///< Found by the proof.

    static RunEnding of(Kind kind) {
        RunEnding ending;
        ending.kind = kind;
        return ending;
    }
    bool succeeded() const { return kind == Kind::Succeeded; }
    /// Whether the tool was to be started.
    bool wasAttempted() const {
        return kind != Kind::SourceGone && kind != Kind::VolumeTooSmall &&
               kind != Kind::PrivateDataUnwritable && kind != Kind::NameTaken;
    }
    /// Whether the output was closed properly, so that it can be proven.
    bool isProvable() const { return succeeded() || kind == Kind::SourceTruncated; }
    /// Whether something may be deleted because its successor is there.
    bool isWhole() const { return succeeded() && receipt && receipt->verdict == ProofVerdict::Whole; }
    bool isKnownDamaged() const { return receipt && receipt->verdict == ProofVerdict::Damaged; }
};

namespace runending {

/// What a run is judged by when the tool has ended.
struct Evidence {
    ToolExit exit;
    QString said;  ///< All of the tool's output.
    quint64 outputBytes = 0;
    double convertedSeconds = 0;
    std::optional<qint32> runtimeSeconds;  ///< Of the source; empty: unknown.
    bool keepsDamaged = false;             ///< A truncated source is no failure.
};

/// The tool also exits with status 0 when it could not read its source to the end or could not write its
/// output completely. A source that lacks only the index at its end counts as complete.
RunEnding decide(const Evidence& evidence);

/// The ending of an output that could not be written for the system's reason `error`, an errno.
RunEnding unwritten(int error);

/// Whether decide() searches for a text that the line contains.
bool isDecisive(QStringView line);

/// The word that the job adds to its output for an ending that the tool does not report; may be empty.
QLatin1StringView marker(RunEnding::Kind kind);

}  // namespace runending
