#pragma once

class PXApplicationDelegate;

/// A run of the tool has ended (`increase`), or the counts are only looked at. Where `allowFeedbackNow` is
/// set, the user may be asked how they like the application.
void increaseUsages(PXApplicationDelegate& delegate, bool increase, bool allowFeedbackNow);
