#include "cli/ConvertReport.h"
#include "cli/JsonReceipt.h"
#include "cli/Output.h"
#include "support/base/Texts.h"

#include <QJsonArray>

namespace {

QString fileOf(const ConversionJob& job) {
    return job.fileInfo().fileURL.toLocalFile();
}

QString destinationOf(const ConversionJob& job) {
    return job.fileInfo().destinationURL.toLocalFile();
}

void write(const char* event, const QString& file, QJsonObject more) {
    more.insert("event", event);
    more.insert("file", file);
    output::json(more);
}

class JsonReport : public ConvertReport {
public:
    void probed(const QString& file, const std::optional<MKVFileInfo>& record,
                std::optional<qsizetype> bestTrack, const json::Messages& messages) override {
        write("probed", file, json::probed(file, record, bestTrack, messages));
    }

    void message(const QString& file, const ConsolePresenter::Message& message) override {
        write("message", file, json::message(message));
    }

    void queued(const ConversionJob& job) override {
        write("queued", fileOf(job),
              {{"destination", destinationOf(job)}, {"plan", json::tracks(job.plan())}});
    }

    void started(const ConversionJob& job) override {
        const auto method = job.method();
        write("started", fileOf(job),
              {{"destination", destinationOf(job)},
               {"arguments", QJsonArray::fromStringList(job.arguments())},
               {"method", method ? QJsonValue(static_cast<int>(*method)) : QJsonValue()}});
    }

    void progress(const ConversionJob& job) override {
        QJsonObject facts{{"percent", job.progress()}, {"status", job.stateInfoString()}};
        if (const double stalled = job.stalledSeconds(); stalled > 0) facts.insert("stalledSeconds", stalled);
        write("progress", fileOf(job), facts);
    }

    void finished(const ConversionJob& job) override {
        write("finished", fileOf(job),
              {{"destination", destinationOf(job)},
               {"seconds", conversionSeconds(job)},
               {"status", job.stateInfoString()},
               {"receipt", json::receipt(job.receipt().value_or(Receipt()))}});
    }

    void skipped(const QString& file, const QString& output, const Receipt& receipt) override {
        write("finished", file,
              {{"destination", output},
               {"seconds", 0},
               {"status", Texts::tr("Status: Skipped, the output is there and whole")},
               {"receipt", json::receipt(receipt)},
               {"skipped", true}});
    }

    void failed(const ConversionJob& job, const failure::Explanation& explanation) override {
        QJsonArray actions;
        for (const FailureAction action : explanation.actions)
            actions.append(wordOf(action));
        QJsonObject facts{{"title", explanation.title},
                          {"message", explanation.message},
                          {"output", job.jobOutput()},
                          {"actions", actions}};
        if (const auto receipt = job.receipt()) facts.insert("receipt", json::receipt(*receipt));
        write("failed", fileOf(job), facts);
    }

    void refused(const QString& file, const QString& message, bool) override {
        write("refused", file, {{"message", message}});
    }
};

}  // namespace

std::unique_ptr<ConvertReport> makeJsonReport() {
    return std::make_unique<JsonReport>();
}
