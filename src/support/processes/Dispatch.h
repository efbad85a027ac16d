#pragma once

#include <functional>

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
void dispatch_after_back(Block block, float seconds);

/// Like dispatch_sync_back(), for `seconds` at the most. False: the block still runs, and owns what it
/// captured.
bool dispatch_sync_back_timeout(Block block, float seconds);
