#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Access to folders that the user chose, stored across launches as bookmarks. A bookmark is the folder's
/// canonical path, and access is only counted; a sandbox that grants access by tokens would be implemented
/// behind these functions. Main thread only.
namespace folderaccess {

/// The bytes to store for a folder. Null on failure; `error` has the reason, for the user.
std::optional<QByteArray> createBookmark(const QString& folder, QString& error);

/// The folder of a bookmark, if it exists and may be entered. Null otherwise; `error` has the reason, for the
/// user.
std::optional<QString> resolveBookmark(const QByteArray& bookmark, QString& error);

/// The path of a bookmark's folder, whether it exists or not.
QString placeOf(const QByteArray& bookmark);

/// Returns false if the folder may not be entered. Balance each success with stopAccessing().
bool startAccessing(const QString& folder);
void stopAccessing(const QString& folder);
/// The number of accesses to the folder that were not stopped yet.
int openAccesses(const QString& folder);

}  // namespace folderaccess
