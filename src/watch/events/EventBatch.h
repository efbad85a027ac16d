#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <string>

/// Flags of what happened to an item and of the kind of item.
enum EventFlag : quint32 {
    kEventItemCreated = 0x100,
    kEventItemRemoved = 0x200,
    kEventItemRenamed = 0x800,  ///< Source or destination of a move.
    kEventItemModified = 0x1000,
    kEventItemIsFile = 0x10000,  ///< Not a folder. May be a link or a pipe: check before opening it.
    kEventItemIsFolder = 0x20000,
};

/// The last known state of a file's contents. Unknown: no event, it was found in the tree. Whole: a writer
/// closed it, or it was moved here.
enum class EventContents { Whole, Unfinished, Unknown };

struct EventRecord {
    QString path;  ///< Absolute.
    quint32 flags = 0;
    EventContents contents = EventContents::Unknown;
    /// The previous path, if the item was moved within the tree; else empty. A moved folder has only this
    /// record, none for its files.
    QString renamedFrom;
};

/// Records that are not delivered yet: one for each path, in the order in which the paths first appeared.
/// Paths are passed as the kernel's bytes; one that is not valid UTF-8 gets no record. Each instance is for
/// one thread.
class EventBatch {
public:
    explicit EventBatch(bool withFileLevelEvents) : m_fileLevel(withFileLevelEvents) {}

    /// Adds an event of item `name` in `folder`. Without file-level events the record is the folder's.
    void add(const std::string& folder, const std::string& name, quint32 flags,
             EventContents contents = EventContents::Unknown, const std::string& renamedFrom = {});

    /// Adds the records of items below `from` again with their new paths, because the old ones no longer
    /// exist. Returns false if `from` is not valid UTF-8, so that nothing below it was ever reported.
    bool folderMoved(const std::string& from, const std::string& to);

    /// Whether anything was added since the last drain(), including a path without a record.
    bool isPending() const { return m_pending; }
    /// Whether there are so many records that they should be delivered now.
    bool isFull() const { return m_records.size() >= kMaximumRecords; }
    quint64 skippedNames() const { return m_skipped; }

    QList<EventRecord> drain();

private:
    static constexpr qsizetype kMaximumRecords = 10'000;

    EventRecord& record(const QString& path);

    bool m_fileLevel;
    bool m_pending = false;
    quint64 m_skipped = 0;
    QList<EventRecord> m_records;
    QHash<QString, qsizetype> m_places;
};
