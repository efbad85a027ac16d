#pragma once

#include "app/Confirmation.h"
#include "convert/plan/ConversionPlan.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

class Destinations;
class FileIntake;
class FilePanels;
class JobQueue;
class Removals;

/// The sheet on which the user confirms a probed movie: its information, its audio tracks, its destination.
/// Shown as long as files are waiting. Main thread only.
class AddSheet : public QObject {
    Q_OBJECT

public:
    static constexpr double kShown = 117.0;
    static constexpr double kHidden = 0.0;

    /// All parameters must outlive the sheet.
    AddSheet(FileIntake& intake, JobQueue& queue, Removals& removals, Destinations& destinations,
             FilePanels& panels, QObject* parent = nullptr);

    /// The sheet's height: kShown or kHidden, in device-independent pixels.
    double topConstraint() const { return m_topConstraint; }
    bool isShown() const { return m_topConstraint > kHidden; }
    /// A probe is running: there is nothing to confirm yet.
    bool isScanning() const;

    /// Path of the movie that is being probed or confirmed; empty: none.
    const QString& path() const { return m_path; }
    /// Number of movies that wait after this one.
    qsizetype waitingCount() const;
    /// One line that describes the movie; empty while it is probed.
    QString informationString() const;
    /// Empty while it is probed, and if the movie does not say.
    std::optional<qint32> runtimeSeconds() const;
    /// One item for each audio track, as shown to the user.
    QStringList audioItems() const;
    /// The language, the title and the format of each of them in words; no two are the same.
    QStringList audioLabels() const;
    qsizetype selectedAudio() const { return m_selectedAudio; }
    void selectAudio(qsizetype index);
    /// What a conversion of the movie would do with the selected audio track and the present settings; empty
    /// while there is no movie to confirm.
    std::optional<ConversionPlan> plan() const;
    /// The movie is converted without its subtitle file.
    void removeSubtitleFile();

    /// Confirms the movie; see Confirmation::add().
    void addToQueue();
    /// Confirms this movie and all waiting ones; see Confirmation::addAll().
    void addAll();
    /// What the user should know before: the movie is in the queue already, or its output exists. Empty:
    /// nothing.
    QString notice() const;
    /// The movie's folder relative to where the added folder is; empty: the movie was added by itself, or the
    /// selected destination has no folders below it.
    QString droppedFolder() const;
    /// Whether outputs get these folders, too, below the destination.
    bool keepsFolders() const;
    void setKeepsFolders(bool keeps);
    /// Skips the movie, also while it is probed, and continues with the next one.
    void cancelAdd();
    /// Skips the movie and all waiting ones; see Removals.
    void cancelAll();

    void hide() { setTopConstraint(kHidden); }

    /// Whether the user can be asked about a movie now that is confirmed by itself; else it waits on the
    /// sheet.
    void setMayAsk(std::function<bool()> mayAsk) { m_mayAsk = std::move(mayAsk); }

Q_SIGNALS:
    /// Emitted for every change except those of the selected audio track and destination.
    void changed();
    /// The plan or the notice may have changed with the selected audio track, the destination or a setting.
    /// changed() implies it, too.
    void planChanged();
    void topConstraintChanged(double height);
    /// Message for the status area.
    void message(const QString& text);

private:
    void showScanning(const QString& path);
    void showAccepted();
    void setTopConstraint(double height);
    void suggestDestination();
    bool isConfirmedByItself() const;

    FileIntake& m_intake;
    JobQueue& m_queue;
    Removals& m_removals;
    Destinations& m_destinations;
    Confirmation m_confirmation;
    double m_topConstraint = kHidden;
    QString m_path;
    int m_drop = 0;  ///< With which it came.
    qsizetype m_selectedAudio = 0;
    std::function<bool()> m_mayAsk = [] { return true; };
};
