#pragma once

#include "support/reports/Mail.h"

#include <QString>

/// Shows an error in an alert that offers to send a problem report by mail. Callable from any thread; blocks
/// until the alert is answered. The alert shows at most 400 characters of `details`, the mail contains all of
/// them.

void alert_feedback_nonfatal(const QString& message, const QString& details);
/// Ends the process with status 1 after any answer.
[[noreturn]] void alert_feedback_fatal(const QString& message, const QString& details);

namespace problemreport {

/// The mail, with all of `details` and the settings. Main thread only.
mail::Message compose(const QString& message, const QString& details, bool isFatal);
QString alertText(const QString& message, const QString& details);

}  // namespace problemreport
