#pragma once

#include <QList>

class JobListView;
class QModelIndex;

/// The list of jobs for screen readers. A row is a list item that is named after its movie; its description
/// is status and note, its value the progress in percent, and its actions are those of its buttons and its
/// menu. Main thread only.
namespace joblist {

/// Has lists that are created from now on described so.
void installAccessible();

/// Reports changed rows: progress is a new value, anything else a new description. `roles` are those of
/// QAbstractItemModel::dataChanged.
void reportChange(JobListView& view, const QModelIndex& first, const QModelIndex& last,
                  const QList<int>& roles);

}  // namespace joblist
