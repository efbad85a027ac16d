#pragma once

#include "probe/MKVFileInfo.h"

#include <QObject>
#include <QStringList>

#include <optional>

class Destinations;
class FileIntake;
class FilePanels;
class JobQueue;

/// The sheet on which a probed movie is confirmed: its information, its audio tracks, where it goes to. Shown
/// as long as files wait. Main thread only.
class AddSheet : public QObject {
    Q_OBJECT

public:
    static constexpr double kShown = 117.0;
    static constexpr double kHidden = 0.0;

    /// All of them outlive the sheet.
    AddSheet(FileIntake& intake, JobQueue& queue, Destinations& destinations, FilePanels& panels,
             QObject* parent = nullptr);

    /// The sheet's height: kShown or kHidden, in device-independent pixels.
    double topConstraint() const { return m_topConstraint; }
    bool isShown() const { return m_topConstraint > kHidden; }
    /// A probe runs: there is nothing to confirm yet.
    bool isScanning() const;

    /// The movie being probed or confirmed; empty: none.
    const QString& path() const { return m_path; }
    /// How many more movies wait behind it.
    qsizetype waitingCount() const;
    /// The line that tells what the movie is; empty while it is probed.
    QString informationString() const;
    /// One item for each audio track.
    QStringList audioItems() const;
    qsizetype selectedAudio() const { return m_selectedAudio; }
    void selectAudio(qsizetype index);

    /// Confirms: makes the job and queues it, after the panels that the selected destination needs.
    void addToQueue();
    /// Leaves the movie out, also while it is probed, and goes on to the next one.
    void cancelAdd();
    /// Leaves out all that wait, too.
    void cancelAll();

    void hide() { setTopConstraint(kHidden); }

Q_SIGNALS:
    /// Anything but the choice of audio and destination changed.
    void changed();
    void topConstraintChanged(double height);
    /// Something to tell the user in passing.
    void message(const QString& text);

private:
    void showScanning(const QString& path);
    void showAccepted();
    void setTopConstraint(double height);
    bool isStillAtHand(const QString& path) const;
    void askForDestination();
    void goNextToSource(bool mayAsk);
    void goToStoredFolder(qsizetype number);
    void addJob(const QString& destination, const QString& securityFolder, bool mayReplace);

    FileIntake& m_intake;
    JobQueue& m_queue;
    Destinations& m_destinations;
    FilePanels& m_panels;
    double m_topConstraint = kHidden;
    QString m_path;
    qsizetype m_selectedAudio = 0;
};
