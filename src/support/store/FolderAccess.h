#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Access to folders that the user chose, kept across launches as a bookmark. Here a bookmark is the folder's
/// canonical path and access is a counted no-op; a sandbox that grants access by tokens takes its place
/// behind these functions. Main thread only.
namespace folderaccess {

/// The bytes to store for a folder. Nothing: `error` says why.
std::optional<QByteArray> createBookmark(const QString& folder, QString& error);

/// The folder of a bookmark, which is there and may be entered. Nothing: `error` says why.
std::optional<QString> resolveBookmark(const QByteArray& bookmark, QString& error);

/// Where the folder of a bookmark is or was, also while it is not there.
QString placeOf(const QByteArray& bookmark);

/// False when the folder may not be entered. Each success is to be balanced by a stopAccessing().
bool startAccessing(const QString& folder);
void stopAccessing(const QString& folder);
/// How many accesses to the folder are open.
int openAccesses(const QString& folder);

}  // namespace folderaccess
