#include "app/queue/QueueRecords.h"

#include <QCryptographicHash>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <list>
#include <utility>

namespace queuerecords {

namespace {

constexpr int kVersion = 1;
constexpr qsizetype kChecksumDigits = 8;

QByteArray checksum(QByteArrayView json) {
    return QCryptographicHash::hash(json, QCryptographicHash::Sha1).toHex().first(kChecksumDigits);
}

QByteArray line(const QJsonObject& record) {
    const QByteArray json = QJsonDocument(record).toJson(QJsonDocument::Compact);
    return checksum(json) + ' ' + json + '\n';
}

std::optional<QJsonObject> recordOf(const QByteArray& line) {
    const QByteArray json = line.mid(kChecksumDigits + 1);
    if (line.size() <= kChecksumDigits || line[kChecksumDigits] != ' ') return std::nullopt;
    if (checksum(json) != line.first(kChecksumDigits)) return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject()) return std::nullopt;
    return document.object();
}

QJsonValue number(quint64 id) {
    return static_cast<qint64>(id);
}

quint64 idOf(const QJsonValue& value) {
    return static_cast<quint64>(qMax<qint64>(0, value.toInteger()));
}

QStringList pathsOf(const QJsonValue& value) {
    return value.toVariant().toStringList();
}

/// Applies records one after the other.
class Reader {
public:
    /// False: the record is unknown or lacks something. One about a job that is not there changes nothing.
    bool apply(const QJsonObject& record);
    Read result() &&;

private:
    struct Row {
        quint64 id = 0;
        std::optional<StoredJob> job;  ///< Empty: removed; others may still be placed behind it.
    };
    using Rows = std::list<Row>;

    Row* rowOf(const QJsonValue& id);
    Rows::iterator placeBehind(quint64 after);
    bool applyJob(const QJsonObject& record);
    bool applyMove(const QJsonObject& record);
    bool applyState(const QJsonObject& record);
    bool applyWaiting(const QJsonObject& record);

    Rows m_rows;
    QHash<quint64, Rows::iterator> m_places;
    Read m_read;
};

Reader::Row* Reader::rowOf(const QJsonValue& id) {
    const auto place = m_places.constFind(idOf(id));
    return place == m_places.cend() ? nullptr : &**place;
}

Reader::Rows::iterator Reader::placeBehind(quint64 after) {
    if (after == 0) return m_rows.begin();
    const auto place = m_places.constFind(after);
    return place == m_places.cend() ? m_rows.end() : std::next(*place);
}

bool Reader::applyJob(const QJsonObject& record) {
    const quint64 id = idOf(record["job"]);
    auto job = storedJob(record);
    if (id == 0 || !job) return false;
    if (const auto place = m_places.constFind(id); place != m_places.cend()) m_rows.erase(*place);
    m_places.remove(id);
    m_places.insert(id, m_rows.insert(placeBehind(idOf(record["after"])), Row{id, std::move(job)}));
    m_read.lastId = qMax(m_read.lastId, id);
    return true;
}

bool Reader::applyMove(const QJsonObject& record) {
    const auto place = m_places.constFind(idOf(record["moved"]));
    if (place == m_places.cend()) return true;
    const quint64 after = idOf(record["after"]);
    if (after != (*place)->id) m_rows.splice(placeBehind(after), m_rows, *place);
    return true;
}

bool Reader::applyState(const QJsonObject& record) {
    Row* row = rowOf(record["of"]);
    if (!row || !row->job) return true;
    row->job->state = stateOfWord(record["state"].toString());
    row->job->failure = pastFailure(record["failure"].toObject());
    if (row->job->state == JobState::Finished) row->job.reset();
    return true;
}

bool Reader::applyWaiting(const QJsonObject& record) {
    QStringList& movies = m_read.queue.waitingMovies;
    movies.resize(qBound<qsizetype>(0, record["waiting"].toInteger(), movies.size()));
    movies += pathsOf(record["added"]);
    if (movies.isEmpty()) m_read.queue.waitingSubtitles.clear();
    return true;
}

bool Reader::apply(const QJsonObject& record) {
    if (record.contains("job")) return applyJob(record);
    if (record.contains("moved")) return applyMove(record);
    if (record.contains("state")) return applyState(record);
    if (record.contains("waiting")) return applyWaiting(record);
    if (record.contains("removed")) {
        const QJsonArray ids = record["removed"].toArray();
        for (const QJsonValue id : ids) {
            if (Row* row = rowOf(id)) row->job.reset();
        }
    } else if (record.contains("subtitles")) {
        m_read.queue.waitingSubtitles += pathsOf(record["subtitles"]);
    } else if (record.contains("paused")) {
        m_read.queue.isPaused = record["paused"].toBool();
    } else if (record.contains("goOnAt")) {
        const QJsonObject move = record["goOnAt"].toObject();
        m_read.queue.isToGoOnAt.reset();
        if (!move.isEmpty()) m_read.queue.isToGoOnAt = {move["from"].toString(), move["to"].toString()};
    } else {
        return false;
    }
    return true;
}

Read Reader::result() && {
    for (Row& row : m_rows) {
        if (row.job) m_read.queue.jobs.push_back({row.id, std::move(*row.job)});
    }
    return std::move(m_read);
}

}  // namespace

QByteArray header() {
    return line({{"queue", kVersion}});
}

QByteArray job(quint64 id, quint64 after, const StoredJob& job) {
    QJsonObject record = toJson(job);
    record["job"] = number(id);
    record["after"] = number(after);
    return line(record);
}

QByteArray moved(quint64 id, quint64 after) {
    return line({{"moved", number(id)}, {"after", number(after)}});
}

QByteArray state(quint64 id, JobState state, const PastFailure& failure) {
    QJsonObject record{{"of", number(id)}, {"state", wordOf(state)}};
    if (state == JobState::Failed) record["failure"] = toJson(failure);
    return line(record);
}

QByteArray removed(const QList<quint64>& ids) {
    QJsonArray numbers;
    for (const quint64 id : ids)
        numbers.append(number(id));
    return line({{"removed", numbers}});
}

QByteArray waiting(qsizetype kept, const QStringList& added) {
    return line({{"waiting", kept}, {"added", QJsonArray::fromStringList(added)}});
}

QByteArray subtitles(const QStringList& added) {
    return line({{"subtitles", QJsonArray::fromStringList(added)}});
}

QByteArray paused(bool isPaused) {
    return line({{"paused", isPaused}});
}

QByteArray goOnAt(const std::optional<StoredQueue::Move>& move) {
    return line({{"goOnAt", move ? QJsonObject{{"from", move->from}, {"to", move->to}} : QJsonObject()}});
}

QByteArray whole(const StoredQueue& queue) {
    QByteArray bytes = header();
    quint64 after = 0;
    for (const StoredQueue::Entry& entry : queue.jobs)
        bytes += job(entry.id, std::exchange(after, entry.id), entry.job);
    if (!queue.waitingMovies.isEmpty()) bytes += waiting(0, queue.waitingMovies);
    if (!queue.waitingSubtitles.isEmpty()) bytes += subtitles(queue.waitingSubtitles);
    if (queue.isPaused) bytes += paused(true);
    if (queue.isToGoOnAt) bytes += goOnAt(queue.isToGoOnAt);
    return bytes;
}

Read read(const QByteArray& bytes) {
    if (bytes.isEmpty()) return {};
    Reader reader;
    qsizetype lines = 0;
    bool isTorn = false;
    bool isDamaged = false;
    for (qsizetype begin = 0; begin < bytes.size(); ++lines) {
        const qsizetype end = bytes.indexOf('\n', begin);
        const bool isComplete = end >= 0;
        const auto record = recordOf(bytes.sliced(begin, (isComplete ? end : bytes.size()) - begin));
        const bool isHeader = lines == 0 && record && (*record)["queue"].toInt() == kVersion;
        const bool isGood = isComplete && record && (isHeader || (lines > 0 && reader.apply(*record)));
        // A crash leaves a part of the last line, a power cut also zeros, and nothing good behind them. The
        // header is never written alone.
        const bool isCutOff = !isComplete || bytes.sliced(begin, end - begin).contains('\0');
        if (isGood ? isTorn : lines == 0 || !isCutOff) isDamaged = true;
        isTorn = isTorn || !isGood;
        begin = isComplete ? end + 1 : bytes.size();
    }
    Read result = std::move(reader).result();
    // Changes are lines of their own.
    const StoredQueue& queue = result.queue;
    const auto count = [](bool is) { return is ? 1 : 0; };
    const qsizetype needed = 1 + static_cast<qsizetype>(queue.jobs.size()) +
                             count(!queue.waitingMovies.isEmpty()) +
                             count(!queue.waitingSubtitles.isEmpty()) + count(queue.isPaused) +
                             count(queue.isToGoOnAt.has_value());
    result.isDamaged = isDamaged;
    result.isCompact = !isTorn && lines == needed;
    return result;
}

}  // namespace queuerecords
