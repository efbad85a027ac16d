#include "convert/proof/ProofWorker.h"

#include "convert/proof/ReadPosition.h"
#include "media/FileEnd.h"
#include "media/Mp4AudioTracks.h"
#include "media/SubtitleFile.h"
#include "support/base/Log.h"
#include "support/processes/Dispatch.h"

#include <QPointer>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(50);
constexpr quint64 kReadAtOnce = 16 * 1024 * 1024;  // bytes that stay in memory until the tool has ended

struct Question {
    QString output;
    ConversionPlan plan;
    QString toolOutput;
};

void enableOneAudioTrack(const QString& output, const media::Reading& reading) {
    const auto result = media::enableFirstAudioTrackOnly(output, reading);
    if (result == media::PatchResult::Failed || result == media::PatchResult::NotAsRead)
        logError("Error: could not mark the first audio track of %@ as the only enabled one", output);
}

}  // namespace

/// Shared with the thread, which may outlive the worker while a read of a dead disk hangs.
struct ProofWorker::Work {
    explicit Work(Request what) : request(std::move(what)) {}

    void run(const QPointer<ProofWorker>& worker) {
        media::Options options;
        options.mayReadUpTo = [this](quint64 position) { return waitForTool(position); };
        media::Reading source = media::read(request.source, options, stop.get_token());
        std::optional<std::vector<media::Line>> lines;
        if (!request.subtitleFile.isEmpty())
            lines = media::readSubtitleFile(request.subtitleFile, stop.get_token());
        std::optional<std::vector<media::AviPictures>> pictures;
        std::optional<bool> isCut;
        std::optional<bool> isProgramStream;
        if (source.tracks.empty()) {
            pictures = media::aviPictures(request.source, stop.get_token());
            isCut = media::endsInsideUnit(request.source);
            isProgramStream = media::isProgramStream(request.source);
            if (!pictures || !isCut || !isProgramStream) source.problem = media::Problem::CannotRead;
        }
        while (const auto asked = nextQuestion()) {
            media::Options fast;
            fast.usesTwoThreads = true;  // The tool has ended; the user waits.
            const media::Reading output = media::read(asked->output, fast, stop.get_token());
            enableOneAudioTrack(asked->output, output);
            const proof::Result result = proof::compare(
                {asked->plan, source, output, lines, pictures.value_or(std::vector<media::AviPictures>()),
                 isCut.value_or(false), isProgramStream.value_or(false), request.runtimeSeconds,
                 asked->toolOutput, request.source});
            dispatch_async_main([worker, result, token = stop.get_token()] {
                if (worker && !token.stop_requested()) Q_EMIT worker->proved(result);
            });
        }
    }

    /// Blocks until the tool has read the source up to `position`. False: the work is abandoned.
    bool waitForTool(quint64 position) {
        if (position <= kReadAtOnce) return !stop.stop_requested();
        std::unique_lock lock(mutex);
        while (!stop.stop_requested() && !toolHasEnded && position > reached) {
            reached = readposition::ofProcess(processId, request.source).value_or(0);
            if (position > reached) changed.wait_for(lock, kPollInterval);
        }
        return !stop.stop_requested();
    }

    std::optional<Question> nextQuestion() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return stop.stop_requested() || question; });
        if (stop.stop_requested()) return std::nullopt;
        return std::exchange(question, std::nullopt);
    }

    template <typename Change>
    void change(Change&& apply) {
        const std::lock_guard lock(mutex);
        apply();
        changed.notify_all();
    }

    const Request request;
    std::stop_source stop;
    std::mutex mutex;
    std::condition_variable changed;
    qint64 processId = 0;
    quint64 reached = 0;
    bool toolHasEnded = false;
    std::optional<Question> question;
};

ProofWorker::ProofWorker(Request request, QObject* parent)
    : QObject(parent), m_work(std::make_shared<Work>(std::move(request))) {
    std::thread([work = m_work, worker = QPointer(this)] { work->run(worker); }).detach();
}

ProofWorker::~ProofWorker() {
    m_work->change([this] { m_work->stop.request_stop(); });
}

void ProofWorker::toolStarted(qint64 processId) {
    m_work->change([&] { m_work->processId = processId; });
}

void ProofWorker::prove(const QString& output, const ConversionPlan& plan, const QString& toolOutput) {
    m_work->change([&] {
        m_work->toolHasEnded = true;
        m_work->question = Question{output, plan, toolOutput};
    });
}
