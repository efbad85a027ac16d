#include "ui/window/JobListModel.h"

#include "app/queue/JobQueue.h"
#include "app/queue/JobTexts.h"
#include "settings/Changes.h"
#include "support/base/Format.h"
#include "ui/widgets/ToolTip.h"

#include <vector>

namespace {

QString withNote(const QString& text, const QString& between, const ConversionJob& job) {
    const QString note = jobNote(job).text();
    return note.isEmpty() ? text : text + between + note;
}

}  // namespace

JobListModel::JobListModel(JobQueue& queue, QObject* parent) : QAbstractListModel(parent), m_queue(queue) {
    connect(&queue, &JobQueue::jobsAboutToBeAdded, this, [this](qsizetype first, qsizetype count) {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
    });
    connect(&queue, &JobQueue::jobsAdded, this, [this] { endInsertRows(); });
    connect(&queue, &JobQueue::jobsAboutToBeRemoved, this, [this](qsizetype first, qsizetype count) {
        for (qsizetype row = first; row < first + count; ++row)
            m_running.remove(m_queue.job(row));
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
    });
    connect(&queue, &JobQueue::jobsRemoved, this, [this] {
        endRemoveRows();
        Q_EMIT runningChanged();
    });
    connect(&queue, &JobQueue::jobsAboutToBeMoved, this,
            [this] { Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint); });
    connect(&queue, &JobQueue::jobsMoved, this, &JobListModel::onMoved);
    connect(&queue, &JobQueue::jobProgressed, this, &JobListModel::onProgressed);
    connect(&queue, &JobQueue::jobStateChanged, this,
            [this](ConversionJob* job, JobState, JobState now) { onStateChanged(job, now); });
    connect(&settings::Changes::shared(), &settings::Changes::changed, this, &JobListModel::onSettingChanged);
}

int JobListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_queue.count());
}

ConversionJob* JobListModel::job(const QModelIndex& index) const {
    return index.isValid() && index.row() < m_queue.count() ? m_queue.job(index.row()) : nullptr;
}

QModelIndex JobListModel::indexOf(const ConversionJob* job) const {
    for (int row = 0; row < rowCount(); ++row) {
        if (m_queue.job(row) == job) return index(row);
    }
    return {};
}

QVariant JobListModel::data(const QModelIndex& index, int role) const {
    ConversionJob* shown = job(index);
    if (!shown) return {};
    switch (role) {
        case Qt::DisplayRole:
            return shown->fileInfo().fileName;
        case Qt::ToolTipRole:
            return plainToolTip(withNote(makeString("%@\n→ %@", shown->fileInfo().fileURL.toLocalFile(),
                                                    shown->fileInfo().destinationURL.toLocalFile()),
                                         "\n", *shown));
        case Qt::AccessibleDescriptionRole:
            return withNote(jobStatus(*shown), ", ", *shown);
        case JobRole:
            return QVariant::fromValue(shown);
        case StateRole:
            return static_cast<int>(shown->state());
        case ProgressRole:
            return shown->progress();
        case StatusRole:
            return jobStatus(*shown);
        case NoteRole:
            return QVariant::fromValue(jobNote(*shown));
        case PosterRole:
            return m_posters ? m_posters(*shown) : QPixmap();
        default:
            return {};
    }
}

void JobListModel::onMoved(qsizetype first, const QList<qsizetype>& origins) {
    std::vector<int> places(static_cast<size_t>(origins.size()));
    for (qsizetype i = 0; i < origins.size(); ++i)
        places[static_cast<size_t>(origins[i] - first)] = static_cast<int>(first + i);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList now = before;
    for (QModelIndex& each : now) {
        const qsizetype at = each.row() - first;
        if (at >= 0 && at < origins.size()) each = index(places[static_cast<size_t>(at)]);
    }
    changePersistentIndexList(before, now);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void JobListModel::onStateChanged(ConversionJob* job, JobState now) {
    const QModelIndex row = indexOf(job);
    if (!row.isValid()) return;
    if (now == JobState::Converting) {
        m_running.insert(job, row);
        Q_EMIT runningChanged();
    } else if (m_running.remove(job)) {
        Q_EMIT runningChanged();
    }
    Q_EMIT dataChanged(row, row);
}

void JobListModel::onProgressed(const ConversionJob* job) {
    const QModelIndex row = m_running.value(job);
    if (row.isValid())
        Q_EMIT dataChanged(row, row, {ProgressRole, StatusRole, Qt::AccessibleDescriptionRole});
}

/// The plans of the jobs that wait follow the settings.
void JobListModel::onSettingChanged() {
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1), {NoteRole});
}
