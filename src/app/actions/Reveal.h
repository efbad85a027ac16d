#pragma once

class ConversionJob;

/// Shows the job's output in the file manager (with Shift the input); for a failed job, explains the failure
/// and offers to send the details to support. Main thread only; blocks until the explanation is answered.
void reveal(const ConversionJob& job, bool shiftIsHeld);
