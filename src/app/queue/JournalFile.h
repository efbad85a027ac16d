#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <mutex>
#include <optional>

/// A file that grows, written in a thread of its own so that a slow disk holds nobody up. What was written is
/// on the disk, whole, also after a power cut. Main thread only.
class JournalFile : public QObject {
    Q_OBJECT

public:
    /// Opens nothing yet. The file has `size` bytes that append() keeps.
    JournalFile(QString path, qint64 size);
    /// Waits until everything was tried to be written.
    ~JournalFile() override;

    void append(const QByteArray& bytes);
    /// Replaces the file, or creates it. Whatever was not written yet is dropped. At each moment the file has
    /// either its old or its new contents.
    void replace(const QByteArray& bytes);
    /// Waits until what was given so far is written, or could not be.
    void wait() { m_thread.waitForDone(); }

Q_SIGNALS:
    /// Everything was written.
    void written();
    /// What was to be written is lost: call replace() with all of it. `reason` is the system's. Both signals
    /// are emitted on the writing thread.
    void failed(const QString& reason);

private:
    void start();
    void write();
    bool replaceFile(const QByteArray& bytes);
    bool appendToFile(const QByteArray& bytes);

    const QString m_path;
    std::mutex m_mutex;                       ///< For the following two.
    std::optional<QByteArray> m_newContents;  ///< Empty: the file is not to be replaced.
    QByteArray m_added;
    qint64 m_size;         ///< Of the file, as far as it was written whole. Writing thread only.
    QThreadPool m_thread;  ///< Of one thread.
};
