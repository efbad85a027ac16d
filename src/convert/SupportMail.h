#pragma once

#include <QString>
#include <QStringList>

class MKVFileInfo;

/// The address of a mail to support about a failed conversion, percent-escaped.
QString conversionSupportMail(const QStringList& arguments, const QString& output, const MKVFileInfo& info);
