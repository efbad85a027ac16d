#pragma once

#include "app/actions/JobCommands.h"

#include <QString>

#include <functional>

class QMenu;

/// The commands of rows in words, and the menu of them. Main thread only.
namespace jobmenu {

/// Adds the commands for the jobs to `menu`; those that cannot be performed are disabled. They keep referring
/// to these jobs, also when one has left the list. `showDetails` is for the job `current`, which may be null.
/// `menu` must not outlive `commands`.
void fill(QMenu& menu, JobCommands& commands, const JobCommands::Jobs& jobs, ConversionJob* current,
          const std::function<void(ConversionJob*)>& showDetails);

/// The name of the movie, or how many there are.
QString subjectOf(const QList<ConversionJob*>& jobs);

}  // namespace jobmenu
