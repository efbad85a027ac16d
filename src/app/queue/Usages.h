#pragma once

class PXApplicationDelegate;

/// Counts the runs of the tool: `increase` is set when a run has ended, unset to evaluate the counts only.
/// With `allowFeedbackNow` the user may be asked for a rating. Main thread only.
void increaseUsages(PXApplicationDelegate& delegate, bool increase, bool allowFeedbackNow);
