#pragma once

#include "app/intake/MovieFiles.h"
#include "probe/MKVFileInfo.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

/// The queue's interface to the files that were added but not confirmed yet. Main thread only.
class WaitingFiles {
public:
    virtual ~WaitingFiles() = default;
    virtual bool areWaiting() const = 0;
    /// The current file is finished with: continues with the next one.
    virtual void cancelAdd() = 0;
};

/// Accepts paths, sorts them into movies and subtitle files, and probes the movies in a background thread,
/// one at a time: the next probe starts when the current movie was confirmed or cancelled. Main thread only.
class FileIntake : public QObject, public WaitingFiles {
    Q_OBJECT

public:
    /// When the messages of a probe are shown: shortly after the window shows the result, or all at once
    /// before the result is announced.
    enum class Messages { Scheduled, AtOnce };

    explicit FileIntake(Messages messages, QObject* parent = nullptr);
    /// Cancels the running probe.
    ~FileIntake() override;

    /// The single entry for new files. The last of the waiting movies is probed first.
    void openFiles(const QStringList& paths);
    /// Probes the next waiting movie; does nothing if none waits.
    void addNextFile();
    void cancelAdd() override;
    /// Cancels the running probe; its movie is skipped without a message.
    void cancelProbe();

    bool areWaiting() const override { return !m_importFiles.isEmpty(); }
    const QStringList& importFiles() const { return m_importFiles; }
    /// Drops the waiting movies.
    void clearImportFiles();
    bool isScanning() const { return !m_scannedFile.isEmpty(); }
    /// The current movie: probed, and not yet confirmed or cancelled.
    const std::optional<MKVFileInfo>& fileInfo() const { return m_fileInfo; }
    /// Takes the subtitle file off the current movie, also in its informationString; other movies may still
    /// get that file.
    void removeSubtitleFile();
    /// The movies that were added and are neither confirmed nor skipped; the one to be confirmed next is the
    /// last. It changes only with filesWaitingChanged(), scanningStarted() and becameIdle().
    QStringList unconfirmedMovies() const;
    /// The subtitle files that were added, also those that movies got.
    QStringList subtitleFiles() const { return m_importSubtitleFiles.values(); }

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

private:
    void handleResult(const QString& path, const QString& subtitle, MKVFileInfo::Probe probe);

    const Messages m_messages;
    const QStringList m_preferredLanguages;
    QStringList m_importFiles;
    moviefiles::SubtitleFiles m_importSubtitleFiles;
    std::optional<MKVFileInfo> m_fileInfo;
    QString m_scannedFile;  ///< Empty: no probe is running.
    /// Whether the running probe is cancelled; its thread polls this.
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
};
