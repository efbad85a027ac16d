#pragma once

#include "convert/JobState.h"
#include "convert/plan/ConversionPlan.h"
#include "convert/proof/Receipt.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class ConversionJob;

/// The status text, or that the job makes no progress. Main thread only.
QString jobStatus(const ConversionJob& job);

/// What there is to say about a job beside its status, in one line: the plan while it waits, the output and
/// the receipt when it is finished, the reason when it failed.
struct JobNote {
    enum class Verdict {
        None,  ///< There is no receipt.
        Whole,
        Damaged,
        Unknown,
        Failed
    };
    struct Part {
        QString text;
        bool isVerdict = false;  ///< The receipt in short, or why the job failed.
        bool operator==(const Part&) const = default;
    };
    Verdict verdict = Verdict::None;
    QList<Part> parts;  ///< The most important one first.

    /// The parts in one line; may be empty.
    QString text() const;
    /// The part that is the verdict; may be empty.
    QString verdictText() const;
    /// Between two parts.
    static QString separator() { return QStringLiteral(" · "); }
    bool operator==(const JobNote&) const = default;
};

/// Main thread only.
JobNote jobNote(const ConversionJob& job);

/// One line for each job that was started. Main thread only.
QString commandLines(const QList<ConversionJob*>& jobs);

/// The receipts of the jobs that have one, each below the name of its movie. Main thread only.
QString receiptTexts(const QList<ConversionJob*>& jobs);
