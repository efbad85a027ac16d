#pragma once

#include "support/network/Download.h"

#include <QString>
#include <QStringView>

#include <functional>
#include <optional>

/// Asks the maker's feed whether a newer build exists, and tells the user. Nothing is downloaded or installed
/// beyond the feed: updating is the work of a program of its own, "Fettle". Only when the user asks; there is
/// no periodic check.

/// What is read in an appcast, whose newest item comes first.
namespace feed {

/// What the first attribute of this name says: the text between its quotes. Nothing: it is not there.
std::optional<QString> attribute(QStringView feed, QStringView name);
/// The build as a number; empty text is build 0, and a number beyond 32 bits the largest that there is.
/// Nothing: there is something else than the digits 0 to 9.
std::optional<qint32> buildNumber(QStringView build);

}  // namespace feed

using Fetcher = std::function<download::Page(const QUrl&)>;

/// `fetcher` is handed the address of the feed on the maker's site. Returns when the user has answered; main
/// thread only. While one check is under way, another does nothing.
void checkForUpdates(const Fetcher& fetcher);
