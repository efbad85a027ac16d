#pragma once

#include "cli/JsonRecords.h"
#include "convert/ConversionJob.h"

#include <QString>

#include <memory>
#include <optional>

/// Tells the user what happens to each movie of a batch. Every movie ends in exactly one of finished(),
/// failed() and refused(). `file` is the movie's absolute path.
class ConvertReport {
public:
    virtual ~ConvertReport() = default;

    virtual void probed(const QString& file, const std::optional<MKVFileInfo>& record,
                        std::optional<qsizetype> bestTrack, const json::Messages& messages) = 0;
    /// Something else is about to be written to the terminal.
    virtual void makeRoom() {}
    /// An alert of the core; `file` is the movie that it is about.
    virtual void message(const QString& file, const ConsolePresenter::Message& message) = 0;
    virtual void queued(const ConversionJob& job) = 0;
    virtual void started(const ConversionJob& job) = 0;
    /// At most once a second for each job.
    virtual void progress(const ConversionJob& job) = 0;
    virtual void finished(const ConversionJob& job) = 0;
    virtual void failed(const ConversionJob& job, const failure::Explanation& explanation) = 0;
    /// `wasShown`: the presenter has said the message already.
    virtual void refused(const QString& file, const QString& message, bool wasShown) = 0;
};

std::unique_ptr<ConvertReport> makeJsonReport();
std::unique_ptr<ConvertReport> makeTextReport(bool quiet);

/// From start to end.
double conversionSeconds(const ConversionJob& job);
