#pragma once

#include "support/processes/Dispatch.h"

#include <QString>

/// For alerts that tell something and decide nothing: `show`, which shows one, runs when nobody is in the
/// middle of anything, one after the other, so that a hundred bad files do not put a hundred windows over
/// each other, and what waits for an answer stands on no object that may go meanwhile. `show` keeps its own
/// copies. Of several with the same `key` that wait or are shown one is enough; an empty key is like no
/// other. Where the presenter does not wait for a user, `show` runs at once. Main thread only.
void showInTurn(Block show, const QString& key = {});
