#include "app/posters/PosterTaker.h"

#include "support/processes/Dispatch.h"
#include "tool/Tool.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QPointer>
#include <QSemaphore>

#include <algorithm>
#include <thread>

namespace {

/// Generous, as other runs go first; for a movie that keeps the tool busy there is kBackgroundSeconds.
constexpr int kLimitMilliseconds = 20000;
constexpr int kBytesPerPixel = 3;

QByteArray frame(const PosterRequest& request, const std::atomic<bool>& isCancelled) {
    const auto byteCount = qsizetype{request.pixels.width()} * request.pixels.height() * kBytesPerPixel;
    QElapsedTimer timer;
    timer.start();
    for (const QString& path : request.paths) {
        if (!QFileInfo::exists(path)) continue;
        // The duration may be wrong, or the movie damaged before the position.
        for (const double position : {PosterTaker::position(request), 0.0}) {
            const auto left = kLimitMilliseconds - static_cast<int>(timer.elapsed());
            if (isCancelled || left <= 0) return {};
            const QByteArray rgb = tool::pipedOutput(PosterTaker::arguments(path, position, request.pixels),
                                                     {.readable = {path}}, byteCount, left, isCancelled);
            if (!rgb.isEmpty()) return rgb;
            if (position <= 0) break;
        }
    }
    return {};
}

}  // namespace

struct PosterTaker::Run {
    std::atomic<bool> isCancelled = false;
    QSemaphore ended;
};

PosterTaker::PosterTaker(QObject* parent) : QObject(parent) {}

PosterTaker::~PosterTaker() {
    cancel();
}

void PosterTaker::take(const PosterRequest& request) {
    m_run = std::make_shared<Run>();
    std::thread([self = QPointer(this), run = m_run, request] {
        const QByteArray rgb = frame(request, run->isCancelled);
        if (!run->isCancelled) {
            dispatch_async_main([self, run, rgb] {
                if (!self || self->m_run != run) return;
                self->m_run.reset();
                Q_EMIT self->taken(rgb);
            });
        }
        run->ended.release();
    }).detach();
}

void PosterTaker::cancel() {
    if (!m_run) return;
    constexpr int kPatienceMilliseconds = 500;
    m_run->isCancelled = true;
    m_run->ended.tryAcquire(1, kPatienceMilliseconds);
    m_run.reset();
}

double PosterTaker::position(const PosterRequest& request) {
    constexpr double kShare = 0.1;  // Behind the titles, in front of the end.
    return kShare * std::max(request.runtimeSeconds.value_or(0), 0);
}

QStringList PosterTaker::arguments(const QString& path, double position, QSize pixels) {
    // The smallest picture of the movie's aspect ratio that covers the poster. A picture that is eight times
    // as wide or as high as that is distorted instead.
    const QString filter = QStringLiteral(
                               "scale=w='min(8*%1,max(%1,ceil(%2*dar)))':h='min(8*%2,max(%2,ceil(%1/dar)))'"
                               ":flags=area,crop=%1:%2")
                               .arg(pixels.width())
                               .arg(pixels.height());
    constexpr int kDecimals = 3;
    return {"-nostdin",    "-loglevel",
            "quiet",       "-threads",
            "1",           "-noaccurate_seek",
            "-ss",         QString::number(position, 'f', kDecimals),
            "-i",          path,
            "-map",        "0:V:0",
            "-an",         "-sn",
            "-dn",         "-frames:v",
            "1",           "-threads",
            "1",           "-vf",
            filter,        "-fps_mode",
            "passthrough", "-pix_fmt",
            "rgb24",       "-f",
            "rawvideo",    "pipe:1"};
}
