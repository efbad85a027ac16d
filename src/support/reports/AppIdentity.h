#pragma once

#include <QString>

#include <functional>

/// What reports and requests say of the application: by which name and address, and of which files it is
/// made. Main thread only.
namespace appidentity {

QString supportAddress();
/// The application's name in reports and requests.
QString supportRequestAppName();
/// Another name for them; null: the application's own.
void setCustomSupportRequestAppName(std::function<QString()> name);

/// Of the application's private frameworks; usually there is none.
QString frameworksFolder();
/// SHA-256 of the program in hexadecimal digits; empty when it cannot be read.
QString checksum();
/// Its first ten characters and those of each program in the frameworks folder, between blanks.
QString checksumIncludingFrameworks();

}  // namespace appidentity
