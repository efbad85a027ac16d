#pragma once

#include <QList>
#include <QPixmap>

#include <memory>

class ConversionJob;
class JobListModel;
class QMimeData;
class QWidget;

/// What is dragged out of the list of jobs: the rows of queued jobs, to be dropped on the list; the files of
/// finished ones, to be dropped elsewhere. Main thread only.
namespace jobdrag {

/// Null if nothing of the jobs can be dragged. A finished job whose file is gone is left out.
std::unique_ptr<QMimeData> dataOf(const QList<ConversionJob*>& jobs);

/// Whether this is from the list of this process.
bool isOwn(const QMimeData& data);
/// Whether these are own rows that can be moved.
bool isMove(const QMimeData& data);
/// The dragged jobs that are still in the list.
QList<ConversionJob*> jobsOf(const QMimeData& data, const JobListModel& model);

/// The name of the movie, or how many there are, in the look of `widget`.
QPixmap picture(const QList<ConversionJob*>& jobs, const QWidget& widget);

}  // namespace jobdrag
