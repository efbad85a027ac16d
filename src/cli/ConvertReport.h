#pragma once

#include "cli/JsonRecords.h"
#include "convert/ConversionJob.h"

#include <QString>

#include <memory>
#include <optional>

/// Reports to the user what happens to each movie of a batch. Each movie ends with exactly one call of
/// finished(), skipped(), failed() or refused(). `file` is the movie's absolute path. Main thread only.
class ConvertReport {
public:
    virtual ~ConvertReport() = default;

    virtual void probed(const QString& file, const std::optional<MKVFileInfo>& record,
                        std::optional<qsizetype> bestTrack, const json::Messages& messages) = 0;
    /// Other text will be written to the terminal: clears the lines that are redrawn in place.
    virtual void prepareForOutput() {}
    /// An alert of the core; `file` is the movie that it refers to.
    virtual void message(const QString& file, const ConsolePresenter::Message& message) = 0;
    virtual void queued(const ConversionJob& job) = 0;
    virtual void started(const ConversionJob& job) = 0;
    /// Called at most once a second for each job.
    virtual void progress(const ConversionJob& job) = 0;
    virtual void finished(const ConversionJob& job) = 0;
    /// The movie was left since `output` is whole; it ends with this call instead of finished().
    virtual void skipped(const QString& file, const QString& output, const Receipt& receipt) = 0;
    virtual void failed(const ConversionJob& job, const failure::Explanation& explanation) = 0;
    /// `wasShown`: the presenter has already written the message.
    virtual void refused(const QString& file, const QString& message, bool wasShown) = 0;
};

std::unique_ptr<ConvertReport> makeJsonReport();
std::unique_ptr<ConvertReport> makeTextReport(bool quiet);

/// Seconds from start to end.
double conversionSeconds(const ConversionJob& job);
