#pragma once

#include "convert/proof/Receipt.h"

/// A receipt in words for the user, translated. Pure; any thread.
namespace receipttext {

/// One line for a row or a notification: "whole: 68,211 of 68,211 pictures", "Damaged at 0:12:31: 14
/// picture(s) are missing", or why nothing could be compared.
QString summary(const Receipt& receipt);

/// The whole receipt in one line: "Whole: 250 of 250 pictures, copied; English AC3 5.1, copied; chapters".
QString sentence(const Receipt& receipt);

/// One line for each track of the output, for the chapters, for what is left out, for the size, for each
/// damaged part and for each note.
QStringList details(const Receipt& receipt);

/// One line for each damaged part: "From 0:12:31 to 0:12:40: 14 pictures are missing".
QStringList damage(const Receipt& receipt);

/// How much of a track there is: "68,197 of 68,211 pictures"; empty for sound.
QString counts(const ReceiptTrack& track);

/// A position in the movie: "0:12:31".
QString position(double seconds);

}  // namespace receipttext
