#pragma once

#include <QString>

#include <functional>

/// The application's name, support address and checksums for reports and support requests. Main thread only.
namespace appidentity {

QString supportAddress();
/// The application's name in reports and requests.
QString supportRequestAppName();
/// Sets another name for them; null: the application's own.
void setCustomSupportRequestAppName(std::function<QString()> name);

/// The folder of the application's private frameworks; usually missing.
QString frameworksFolder();
/// SHA-256 of the program in hexadecimal digits; empty if it cannot be read.
QString checksum();
/// The first ten characters of the checksums of the program and of each program in the frameworks folder,
/// separated by blanks.
QString checksumIncludingFrameworks();

}  // namespace appidentity
