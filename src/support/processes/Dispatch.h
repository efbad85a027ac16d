#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// Runs blocks on the main thread's event loop or in the pool of background threads. Callable from any
/// thread. Blocks for the main thread need the QCoreApplication; those still pending when the event loop ends
/// are dropped.
using Block = std::function<void()>;

bool isMainThread();

/// Runs the block on the main thread and waits for it; on the main thread itself, runs it directly.
void dispatch_sync_main(const Block& block);
void dispatch_async_main(Block block);
void dispatch_after_main(Block block, float seconds);

void dispatch_async_back(Block block);
/// Runs the block on a background thread and waits for it.
void dispatch_sync_back(const Block& block);
/// Runs `work` on a background thread and blocks until its argument `done` is called, on any thread.
/// Deadlocks if that needs the event loop of the waiting thread.
void dispatch_async_to_sync(std::function<void(Block done)> work);
/// The same for work that passes a result to its handler; returns that result.
template <typename Result>
Result dispatch_async_to_sync_resulthandler(std::function<void(std::function<void(Result)> handler)> work) {
    const auto result = std::make_shared<std::optional<Result>>();
    dispatch_async_to_sync([result, work = std::move(work)](const Block& done) {
        work([result, done](Result value) {
            *result = std::move(value);
            done();
        });
    });
    return std::move(**result);
}
void dispatch_after_back(Block block, float seconds);

/// Like dispatch_sync_back(), but waits at most `seconds`. False: the block still runs, and owns its
/// captures.
bool dispatch_sync_back_timeout(Block block, float seconds);
