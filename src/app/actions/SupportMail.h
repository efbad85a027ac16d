#pragma once

#include "support/reports/Mail.h"

#include <QString>
#include <QStringList>

class MKVFileInfo;

/// The mail to support about a failed conversion, including the settings. Main thread only.
mail::Message conversionSupportMail(const QStringList& arguments, const QString& output,
                                    const MKVFileInfo& info);
