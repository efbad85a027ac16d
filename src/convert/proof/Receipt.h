#pragma once

#include "convert/plan/ConversionPlan.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Whether the output holds everything that was promised.
enum class ProofVerdict {
    Whole,
    Damaged,  ///< Something is missing, or the source is damaged.
    Unknown,  ///< The source carries nothing to compare with, or the proof is switched off.
};

/// One track of the output, compared with its source.
struct ReceiptTrack {
    PlannedTrack plan;
    std::optional<quint64> count;        ///< Pictures, packets or subtitle lines in the output.
    std::optional<quint64> sourceCount;  ///< The same in the source.
    std::optional<double> seconds;       ///< The end of the track in the output.
    std::optional<double> sourceSeconds;
};

/// A part of the movie that is missing or does not play.
struct ReceiptDamage {
    double from = 0;  ///< Seconds of the movie.
    double to = 0;
    QString what;  ///< In words for the user.
};

/// What a conversion has produced, compared with its plan and its source. A value; any thread.
struct Receipt {
    ProofVerdict verdict = ProofVerdict::Unknown;
    QList<ReceiptTrack> tracks;  ///< In the order of the output's streams.
    int chapterCount = 0;        ///< Of carried chapters.
    QString leftOut;             ///< What of the movie is not in the output, in words; may be empty.
    qint64 outputBytes = 0;
    QList<ReceiptDamage> damage;
    QStringList notes;      ///< Why something cannot be known, which remedy was applied; in words.
    bool mayBeKept = true;  ///< The loss is small, and no promised track is missing: the job is finished.
};
