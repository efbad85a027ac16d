#include "support/processes/Dispatch.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <cmath>
#include <memory>

namespace {

int milliseconds(float seconds) {
    return static_cast<int>(std::lround(static_cast<double>(seconds) * 1000));
}

}  // namespace

bool isMainThread() {
    return QCoreApplication::instance()->thread() == QThread::currentThread();
}

void dispatch_sync_main(const Block& block) {
    if (isMainThread()) {
        block();
    } else {
        QMetaObject::invokeMethod(QCoreApplication::instance(), block, Qt::BlockingQueuedConnection);
    }
}

void dispatch_async_main(Block block) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(block), Qt::QueuedConnection);
}

void dispatch_after_main(Block block, float seconds) {
    const auto start = [block = std::move(block), seconds] {
        QTimer::singleShot(milliseconds(seconds), Qt::PreciseTimer, QCoreApplication::instance(), block);
    };
    // A timer needs its thread's event loop, which a background thread does not have.
    if (isMainThread()) {
        start();
    } else {
        dispatch_async_main(start);
    }
}

void dispatch_async_back(Block block) {
    QThreadPool::globalInstance()->start(std::move(block));
}

void dispatch_sync_back(const Block& block) {
    dispatch_async_to_sync([&block](const Block& done) {
        block();
        done();
    });
}

void dispatch_async_to_sync(std::function<void(Block done)> work) {
    // Shared with all copies of `done`: this call may return while `work` is still running.
    const auto finished = std::make_shared<QSemaphore>();
    dispatch_async_back([finished, work = std::move(work)] { work([finished] { finished->release(); }); });
    finished->acquire();
}

void dispatch_after_back(Block block, float seconds) {
    dispatch_after_main([block = std::move(block)] { dispatch_async_back(block); }, seconds);
}

bool dispatch_sync_back_timeout(Block block, float seconds) {
    const auto done = std::make_shared<QSemaphore>();
    dispatch_async_back([block = std::move(block), done] {
        block();
        done->release();
    });
    return done->tryAcquire(1, milliseconds(seconds));
}
