#pragma once

#include "app/destinations/DestinationPopUp.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

class ConversionJob;
class Destinations;
class FileIntake;
class FilePanels;
class JobQueue;

/// Queues the movies that the user confirms: each goes where the pop-up of the add sheet says, after the file
/// panels that this needs. Main thread only.
class Confirmation : public QObject {
    Q_OBJECT

public:
    /// All parameters must outlive this object.
    Confirmation(FileIntake& intake, JobQueue& queue, Destinations& destinations, FilePanels& panels,
                 QObject* parent = nullptr);

    /// Queues the current movie.
    void add(qsizetype audioTrack);
    /// Queues the current movie and all that wait, each as soon as it is probed; see
    /// FileIntake::beginBatch(). "Ask for each movie" asks once, for a folder. A destination that cannot be
    /// used ends this, with the movie still the current one; next to the movies, a refused one waits for the
    /// user behind the others.
    void addAll(qsizetype audioTrack);
    bool isAddingAll() const { return m_all.has_value(); }
    /// Queues the next movie of addAll(), which is now the current one. The movie for which addAll() was
    /// called gets the track that was chosen then.
    void addNext(qsizetype audioTrack);

    /// Whether the current movie's folder of its drop is kept below the destination, if the setting says so.
    bool mayKeepFolders() const;
    /// Whether add() would ask the user something first.
    bool needsUser() const;
    /// Where the current movie would be written if that name were free; empty: the user will be asked.
    QString expectedOutput() const;

Q_SIGNALS:
    /// Message for the status area.
    void message(const QString& text);

private:
    struct All {
        QString folder;  ///< Chosen for all; empty: the pop-up says where.
        QString firstMovie;
        qsizetype firstAudioTrack = 0;
        QList<QPointer<const ConversionJob>> jobs;
        QSet<QString> sources;  ///< Of the jobs in the queue.
        QSet<QString> wanted;   ///< The names that its outputs should have had.
    };
    struct Target {
        QString folder;        ///< Exists, or cannot be used.
        QString openedFolder;  ///< Access to it is released with the job; empty: none.
    };

    QString source() const;
    QString besideSource() const;
    QString subfolder() const;
    DestinationItem::Kind selectedKind() const;
    qsizetype selectedFolder() const;
    bool isStillCurrent(const QString& path) const;
    void askForDestination();
    void whenSourceFolderIsOpen(const std::function<void()>& then);
    void beginAll(const QString& folder, qsizetype audioTrack);
    std::optional<Target> openTarget(QString& problem) const;
    void addToTarget();
    const ConversionJob* lastOfAll();
    void addJob(const QString& output, const QString& openedFolder, bool mayReplace);
    void refuse(const QString& reason);

    FileIntake& m_intake;
    JobQueue& m_queue;
    Destinations& m_destinations;
    FilePanels& m_panels;
    qsizetype m_audioTrack = 0;
    std::optional<All> m_all;
};
