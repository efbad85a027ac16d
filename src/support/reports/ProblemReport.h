#pragma once

#include "support/reports/Mail.h"

#include <QString>

/// Turns an error into an alert that offers to send a problem report by mail. From any thread; blocks it
/// until the alert is answered. The alert shows at most 400 characters of `details`, the mail has them all.

void alert_feedback_nonfatal(const QString& message, const QString& details);
/// Ends the process with status 1, whatever the answer.
[[noreturn]] void alert_feedback_fatal(const QString& message, const QString& details);

namespace problemreport {

/// The mail, with all of `details` and the settings.
mail::Message compose(const QString& message, const QString& details, bool isFatal);
QString alertText(const QString& message, const QString& details);

}  // namespace problemreport
