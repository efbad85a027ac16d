#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

/// Files that are dragged over the window. Main thread only.
namespace droppedfiles {

/// The local files and folders among the URLs; plain text that is the path of a file is accepted, too.
QStringList paths(const QList<QUrl>& urls);

/// Whether the drop is accepted: `paths` contains a movie, or a folder with one. A folder that is too large
/// to be searched during the drag is accepted.
bool isAccepted(const QStringList& paths);

/// Why it is refused, in one sentence for the user. Folders are searched as for isAccepted().
QString refusal(const QList<QUrl>& urls);

}  // namespace droppedfiles
