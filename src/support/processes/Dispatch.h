#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// Work handed to the main thread's event loop or to the pool of background threads. A block for the main
/// thread needs the QCoreApplication; what has not run when the event loop ends is dropped.
using Block = std::function<void()>;

bool isMainThread();

/// Runs the block now on the main thread, otherwise there, and waits for it.
void dispatch_sync_main(const Block& block);
void dispatch_async_main(Block block);
void dispatch_after_main(Block block, float seconds);

void dispatch_async_back(Block block);
/// Runs the block on a background thread and waits for it.
void dispatch_sync_back(const Block& block);
/// Runs `work` on a background thread and waits until somebody, there or elsewhere, calls what it was given.
/// Not for work that ends in the event loop of the thread that waits.
void dispatch_async_to_sync(std::function<void(Block done)> work);
/// The same for work that ends with a result, which is returned.
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

/// Like dispatch_sync_back(), for `seconds` at the most. False: the block still runs, and owns what it
/// captured.
bool dispatch_sync_back_timeout(Block block, float seconds);
