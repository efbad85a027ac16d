#pragma once

#include "convert/JobState.h"

#include <QAbstractListModel>
#include <QHash>
#include <QPersistentModelIndex>
#include <QPixmap>

#include <functional>

class ConversionJob;
class JobQueue;

/// The queue as rows, in its order. Reports only the row that changed; the cost of a progress update does not
/// depend on the length of the queue. Main thread only.
class JobListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        JobRole = Qt::UserRole,  ///< ConversionJob*, owned by the queue.
        StateRole,               ///< JobState as an integer.
        ProgressRole,            ///< Percent.
        StatusRole,              ///< The status in one line.
        NoteRole,                ///< JobNote
        PosterRole,              ///< QPixmap of a frame of the movie; null: none (yet).
    };

    /// `queue` must outlive the model.
    explicit JobListModel(JobQueue& queue, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    /// Qt::DisplayRole is the movie's name.
    QVariant data(const QModelIndex& index, int role) const override;

    /// Where PosterRole is looked up; null: there are no posters.
    void setPosters(std::function<QPixmap(const ConversionJob& job)> posters) {
        m_posters = std::move(posters);
    }

    /// Null for an invalid index.
    ConversionJob* job(const QModelIndex& index) const;
    QModelIndex indexOf(const ConversionJob* job) const;
    /// The rows of the running jobs, in no order.
    QList<QPersistentModelIndex> running() const { return m_running.values(); }

Q_SIGNALS:
    /// The result of running() has changed.
    void runningChanged();

private:
    void onMoved(qsizetype first, const QList<qsizetype>& origins);
    void onStateChanged(ConversionJob* job, JobState now);
    void onProgressed(const ConversionJob* job);
    void onSettingChanged();

    JobQueue& m_queue;
    std::function<QPixmap(const ConversionJob&)> m_posters;
    /// The running jobs: their rows change when other jobs are added or removed, and Qt keeps these indexes
    /// up to date.
    QHash<const ConversionJob*, QPersistentModelIndex> m_running;
};
