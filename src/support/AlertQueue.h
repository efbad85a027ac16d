#pragma once

#include "support/Dispatch.h"

/// For alerts that tell something and decide nothing: `show`, which shows one, runs when nobody is in the
/// middle of anything, one after the other, so that a hundred bad files do not put a hundred windows over
/// each other, and what waits for an answer stands on no object that may go meanwhile. `show` keeps its own
/// copies. Where the presenter does not wait for a user, it runs at once. Main thread only.
void showInTurn(Block show);
