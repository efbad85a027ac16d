#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

/// What is dragged over the window.
namespace droppedfiles {

/// The files and folders of this computer among the addresses; text that names a file counts, too.
QStringList paths(const QList<QUrl>& urls);

/// Whether the drop is taken: a movie is among the paths, or a folder that holds one. A folder too large to
/// be searched while the pointer moves is taken.
bool isAccepted(const QStringList& paths);

/// Why it is not taken, in one sentence for the user.
QString refusal(const QList<QUrl>& urls);

}  // namespace droppedfiles
