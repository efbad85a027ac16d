#pragma once

#include "support/network/Download.h"

#include <QString>
#include <QStringView>

#include <functional>
#include <optional>

/// Checks the vendor's feed for a newer build and shows the result to the user. Downloads only the feed:
/// another program, "Fettle", installs updates. Runs only on the user's command; there is no periodic check.

/// Parses an appcast, whose newest item is the first. Callable from any thread.
namespace feed {

/// The value of the first attribute of this name: the text between its quotes. Null: there is none.
std::optional<QString> attribute(QStringView feed, QStringView name);
/// The build as a number; empty text is build 0, and a number beyond 32 bits becomes the largest one. Null if
/// there are other characters than the digits 0 to 9.
std::optional<qint32> buildNumber(QStringView build);

}  // namespace feed

using Fetcher = std::function<download::Page(const QUrl&)>;

/// `fetcher` receives the address of the feed on the vendor's site. Blocks until the user has answered; main
/// thread only. Does nothing while another check is running.
void checkForUpdates(const Fetcher& fetcher);
