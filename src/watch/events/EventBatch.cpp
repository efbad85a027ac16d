#include "watch/events/EventBatch.h"

#include "support/base/Text.h"
#include "watch/events/PathTree.h"

#include <QByteArray>

#include <optional>
#include <utility>

namespace {

std::optional<QString> decoded(const std::string& path) {
    return text::fromUtf8(QByteArray::fromRawData(path.data(), static_cast<qsizetype>(path.size())));
}

}  // namespace

EventRecord& EventBatch::record(const QString& path) {
    const auto found = m_places.constFind(path);
    if (found != m_places.constEnd()) return m_records[found.value()];
    m_places.insert(path, m_records.size());
    m_records.emplaceBack().path = path;
    return m_records.last();
}

void EventBatch::add(const std::string& folder, const std::string& name, quint32 flags,
                     EventContents contents, const std::string& renamedFrom) {
    m_pending = true;
    const std::optional<QString> path = decoded(m_fileLevel ? joinedPath(folder, name) : folder);
    if (!path) {
        ++m_skipped;
        return;
    }
    EventRecord& item = record(*path);
    if (!m_fileLevel) {
        item.flags |= kEventItemModified | kEventItemIsFolder;
        return;
    }
    item.flags |= flags;
    if (contents == EventContents::Unknown) return;
    item.contents = contents;
    // An item that is moved again keeps its first source here; the next move has its own record.
    if (!renamedFrom.empty()) item.renamedFrom = decoded(renamedFrom).value_or(QString());
}

bool EventBatch::folderMoved(const std::string& from, const std::string& to) {
    const std::optional<QString> before = decoded(from);
    const std::optional<QString> now = decoded(to);
    if (!before) return !now;
    if (!now || !m_fileLevel) return true;
    const QString start = *before + u'/';
    const qsizetype count = m_records.size();
    for (qsizetype i = 0; i < count; ++i) {
        if (!m_records.at(i).path.startsWith(start)) continue;
        const EventRecord old = m_records.at(i);
        m_records[i].contents = EventContents::Unfinished;
        EventRecord& item = record(*now + old.path.mid(before->size()));
        item.flags |= old.flags | kEventItemRenamed;
        item.contents = old.contents;
        item.renamedFrom = old.path;
    }
    return true;
}

QList<EventRecord> EventBatch::drain() {
    m_pending = false;
    m_places.clear();
    return std::exchange(m_records, {});
}
