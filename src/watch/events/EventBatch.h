#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <string>

/// What happened to an item, or-ed, and what kind of item it is.
enum EventFlag : quint32 {
    kEventItemCreated = 0x100,
    kEventItemRemoved = 0x200,
    kEventItemRenamed = 0x800,  ///< Either end of a move.
    kEventItemModified = 0x1000,
    kEventItemIsFile =
        0x10000,  ///< No folder. A link or a pipe may look like this, too: whoever opens it asks.
    kEventItemIsFolder = 0x20000,
};

/// What was heard last of the contents of a file. Untold: nothing, it was found in the tree. Whole: a writer
/// closed it, or it was moved here.
enum class EventContents { Whole, Unfinished, Untold };

struct EventRecord {
    QString path;  ///< Absolute.
    quint32 flags = 0;
    EventContents contents = EventContents::Untold;
    /// The name that it had before, when it was moved from one place in the tree to this one; else empty.
    /// Of a folder that is moved this is the only record: the files in it move along in silence.
    QString renamedFrom;
};

/// Records on their way to the caller: one for each path, in the order in which the paths first appeared.
/// Paths come as the bytes that the kernel gives; one that is not valid UTF-8 makes no record.
class EventBatch {
public:
    explicit EventBatch(bool withFileLevelEvents) : m_fileLevel(withFileLevelEvents) {}

    /// Of item `name` in `folder`. Without file-level events the record is the folder's.
    void add(const std::string& folder, const std::string& name, quint32 flags,
             EventContents contents = EventContents::Untold, const std::string& renamedFrom = {});

    /// Records of items below `from` come again under their new paths, because nobody finds them under the
    /// old ones. False: `from` was no valid text, so nothing below it has ever been told.
    bool folderMoved(const std::string& from, const std::string& to);

    /// Something was added since the last drain(), be it only a path that makes no record.
    bool isPending() const { return m_pending; }
    /// So many records that they are better handed over than kept.
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
