#pragma once

#include "app/intake/Drops.h"
#include "app/intake/GatheredVerdicts.h"
#include "app/intake/MovieFiles.h"
#include "probe/MKVFileInfo.h"
#include "support/base/FileStamp.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

/// The queue's interface to the files that were added but not confirmed yet. Main thread only.
class WaitingFiles {
public:
    virtual ~WaitingFiles() = default;
    /// Whether files wait for the user, so that added jobs are not to start yet.
    virtual bool areWaiting() const = 0;
    /// The current file is finished with: continues with the next one.
    virtual void cancelAdd() = 0;
};

/// Accepts paths, sorts them into movies and subtitle files, and probes the movies in a background thread,
/// one at a time: the next probe starts when the current movie was confirmed or cancelled, or with expect().
/// Main thread only.
class FileIntake : public QObject, public WaitingFiles {
    Q_OBJECT

public:
    /// When the messages of a probe are shown: shortly after the window shows the result, or all at once
    /// before the result is announced.
    enum class Messages { Scheduled, AtOnce };

    explicit FileIntake(Messages messages, QObject* parent = nullptr);
    /// Cancels the running probes.
    ~FileIntake() override;

    /// The single entry for new files. The last of the waiting movies is probed first. `folders`: those that
    /// were searched for these files.
    void openFiles(const QStringList& paths, const QStringList& folders = {},
                   Drops::Origin origin = Drops::Origin::User);
    /// Begins to probe a movie that will be opened next, beside the current one. Its result is used then,
    /// unless the file has changed; nothing is announced before.
    void expect(const QString& path);
    /// Probes the next waiting movie; does nothing if none waits.
    void addNextFile();
    void cancelAdd() override;
    /// Cancels the running probe; its movie is skipped without a message.
    void cancelProbe();

    /// From now on the current movie and all that wait become the current one by themselves, one after the
    /// other in the order of their paths ("2" before "10"). Their messages are gathered and shown at the end
    /// of the batch. Files that are opened meanwhile follow behind it. Does nothing without a current movie.
    void beginBatch();
    /// Ends the batch before its end; its movies wait as before it. Does nothing if there is no batch.
    void endBatch();
    bool isBatch() const { return m_batch.has_value(); }
    /// How many movies of the batch are not confirmed yet, with the current one.
    qsizetype batchCount() const;
    /// Adds a message about the current movie to those of the batch.
    void addToBatchMessages(const Verdict& message);
    /// In a batch: the current movie waits for the user behind the batch.
    void setAside();

    bool areWaiting() const override { return !m_importFiles.isEmpty() && !m_batch; }
    const QStringList& importFiles() const { return m_importFiles; }
    /// Drops the waiting movies.
    void clearImportFiles();

    /// Movies that were added and not confirmed.
    struct Unconfirmed {
        QStringList files;  ///< And their subtitle files; the current movie is the last one.
        QStringList folders;
        int count = 0;  ///< Of the movies.
    };
    /// Drops the current movie and all that wait. openFiles() brings them back.
    Unconfirmed cancelAll();
    /// The application ends: the same without messages, and the running probe is cancelled.
    void stop();
    bool isScanning() const { return m_scan != nullptr; }
    /// The current movie: probed, and not yet confirmed or cancelled.
    const std::optional<MKVFileInfo>& fileInfo() const { return m_fileInfo; }
    /// Takes the subtitle file off the current movie, also in its informationString; other movies may still
    /// get that file.
    void removeSubtitleFile();
    /// The movies that were added and are neither confirmed nor skipped; the one to be confirmed next is the
    /// last. It changes only with filesWaitingChanged(), scanningStarted() and becameIdle().
    QStringList unconfirmedMovies() const;
    bool hasUnconfirmedMovies() const;
    /// The subtitle files that were added, also those that movies got.
    QStringList subtitleFiles() const { return m_importSubtitleFiles.values(); }
    /// Where the movies that were added and not yet confirmed came from.
    const Drops& drops() const { return m_drops; }

    /// Position of the audio track to preselect for the current movie; empty for a movie without audio.
    std::optional<qsizetype> bestLanguage() const;
    /// The same for another movie.
    std::optional<qsizetype> bestLanguage(const MKVFileInfo& info) const;

Q_SIGNALS:
    void filesWaitingChanged();
    void scanningStarted(const QString& path);
    /// A probe has ended; its messages and its result follow.
    void scanningEnded(const QString& path);
    /// fileInfo() now holds the record.
    void fileAccepted();
    /// The movie cannot be converted; the messages of the probe explain why. The next file follows
    /// automatically.
    void fileRejected(const QString& path);
    /// No file waits and there is no current movie.
    void becameIdle();
    /// The movies of the batch are no longer taken by themselves.
    void batchEnded();

private:
    struct Batch {
        qsizetype waiting = 0;  ///< How many at the end of m_importFiles belong to it.
        GatheredVerdicts messages;
    };
    /// A probe and, at last, its result.
    struct Scan {
        QString path;
        QString subtitle;  ///< The movie's subtitle file; empty: none.
        std::optional<FileStamp> stamp;
        std::atomic<bool> isCancelled = false;  ///< Its thread polls this.
        std::optional<MKVFileInfo::Probe> result;
    };
    std::shared_ptr<Scan> startScan(const QString& path);
    void handleResult();
    void cancelExpected();

    const Messages m_messages;
    const QStringList m_preferredLanguages;
    QStringList m_importFiles;
    moviefiles::SubtitleFiles m_importSubtitleFiles;
    Drops m_drops;
    std::optional<Batch> m_batch;
    /// The record of a waiting movie that was the current one when a batch began.
    std::optional<MKVFileInfo> m_heldInfo;
    std::optional<MKVFileInfo> m_fileInfo;
    std::shared_ptr<Scan> m_scan;      ///< Of the next current movie; null: no probe is running.
    std::shared_ptr<Scan> m_expected;  ///< Of the movie after it; may be null.
    int m_running = 0;                 ///< Number of probes that run.
};
