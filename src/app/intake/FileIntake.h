#pragma once

#include "app/intake/MovieFiles.h"
#include "probe/MKVFileInfo.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

/// What the queue needs to know of the files that wait in front of it.
class WaitingFiles {
public:
    virtual ~WaitingFiles() = default;
    virtual bool areWaiting() const = 0;
    /// The file at hand is dealt with: on to the next one.
    virtual void cancelAdd() = 0;
};

/// Takes paths in, sorts them into movies and subtitle files, and probes the movies in the background, one at
/// a time: the next probe starts when the movie at hand was confirmed or cancelled. Main thread only.
class FileIntake : public QObject, public WaitingFiles {
    Q_OBJECT

public:
    /// When the messages of a probe are shown: a moment later, while the window already shows the result, or
    /// in one go before it is announced.
    enum class Messages { Scheduled, AtOnce };

    explicit FileIntake(Messages messages, QObject* parent = nullptr);
    /// Ends the probe that is under way.
    ~FileIntake() override;

    /// The single entry for new files. Of the movies waiting the last one is taken first.
    void openFiles(const QStringList& paths);
    /// Probes the next waiting movie; nothing when none waits.
    void addNextFile();
    void cancelAdd() override;
    /// Gives the probe that is under way up; its movie is left out without a word.
    void cancelProbe();

    bool areWaiting() const override { return !m_importFiles.isEmpty(); }
    const QStringList& importFiles() const { return m_importFiles; }
    /// Forgets the movies that wait.
    void clearImportFiles();
    bool isScanning() const { return !m_scannedFile.isEmpty(); }
    /// The movie that was probed and is not yet confirmed or cancelled.
    const std::optional<MKVFileInfo>& fileInfo() const { return m_fileInfo; }
    /// All that was taken in and neither confirmed nor left out: the subtitle files, then the movies, the one
    /// to be confirmed next at the end.
    QStringList unconfirmedFiles() const;

    /// Position of the audio track to preselect for the movie at hand; nothing without audio.
    std::optional<qsizetype> bestLanguage() const;

Q_SIGNALS:
    void filesWaitingChanged();
    void scanningStarted(const QString& path);
    /// A probe has ended; its messages and its result follow.
    void scanningEnded(const QString& path);
    /// fileInfo() holds the record.
    void fileAccepted();
    /// The probe said no; its messages say why. The next file follows by itself.
    void fileRejected(const QString& path);
    /// No file waits and none is at hand.
    void becameIdle();

private:
    void takeResult(const QString& path, const QString& subtitle, MKVFileInfo::Probe probe);

    const Messages m_messages;
    const QStringList m_preferredLanguages;
    QStringList m_importFiles;
    moviefiles::SubtitleFiles m_importSubtitleFiles;
    std::optional<MKVFileInfo> m_fileInfo;
    QString m_scannedFile;  ///< Empty: no probe runs.
    /// Whether the probe under way is given up; its thread looks at it.
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
};
