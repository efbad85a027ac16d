#pragma once

#include "support/processes/Dispatch.h"

#include <QString>

/// Queues `show`, which shows an informational alert without a decision. Queued alerts run one at a time from
/// the event loop, so that a hundred bad files do not open a hundred windows, and the caller may be deleted
/// while an alert is open: `show` must capture copies only. An alert is dropped if one with the same
/// non-empty `key` is queued or shown. If the presenter does not wait for a user, `show` runs at once. Main
/// thread only.
void showInTurn(Block show, const QString& key = {});
