#pragma once

#include "app/queue/QueueOutcome.h"

class ConversionJob;
class QString;

/// What the user is told when a job ends. Main thread only.
namespace jobmessages {

/// The job has ended: an urgent message if it failed for a reason that concerns other jobs, too (the source
/// is gone, the volume is full), and a notification if the tool was started.
void showEnding(const ConversionJob& job);

/// A notification at the end of the queue, in the place of the last one about a converted movie.
void notifyOfEnd(const QueueOutcome::Sum& sum);

/// The main window was closed, and the application goes on.
void notifyOfClosedWindow(bool isConverting);
/// It no longer does, or its window is open again.
void withdrawClosedWindow();

/// A movie has arrived in the watch folder while the main window is closed.
void notifyOfArrival(const QString& path);

}  // namespace jobmessages
