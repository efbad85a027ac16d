#pragma once

#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "cli/CommandLine.h"
#include "cli/ConvertReport.h"
#include "cli/Inputs.h"
#include "feedback/PXApplicationDelegate.h"

#include <QObject>

#include <memory>

/// Converts a batch of movies with the same intake and queue as the window; the options replace the choices
/// of its add sheet. Ends the event loop when every movie has ended. Main thread only.
class ConvertCommand : public QObject {
    Q_OBJECT

public:
    ConvertCommand(const ConvertOptions& options, ConsolePresenter& presenter);
    ~ConvertCommand() override;

    /// Call it from the event loop.
    void begin(const Inputs& inputs);
    /// Keeps running when every movie has ended, since more will follow. Jobs that ended are deleted.
    void setEndless(bool endless);
    /// Adds one more movie.
    void add(const QString& path);
    /// Aborts the running conversions and drops the waiting movies; incomplete outputs are deleted.
    void interrupt();

    int failures() const { return m_failures; }
    /// Movies that finished but are not whole.
    int damaged() const { return m_damaged; }

private:
    void setSubject(const QString& file);
    void onMessage(const ConsolePresenter::Message& message);
    void onFileAccepted();
    void onFileRejected(const QString& path);
    std::optional<qsizetype> chooseAudio(const QString& file, std::optional<qsizetype> best);
    bool chooseDestination(MKVFileInfo& info, QString& problem) const;
    void addToQueue(MKVFileInfo info, qsizetype audioTrackIndex);
    void watch(ConversionJob* job);
    void onEnded(ConversionJob* job);
    void refuse(const QString& file, const QString& message, bool wasShown);
    void refuseAtHand(const QString& message, bool wasShown);
    void reportProbe(const QString& file, const std::optional<MKVFileInfo>& record,
                     std::optional<qsizetype> best);
    void addNextMovie();
    void endIfDone();

    const ConvertOptions m_options;
    ConsolePresenter& m_presenter;
    std::unique_ptr<ConvertReport> m_report;
    PXApplicationDelegate m_usages;
    FileIntake m_intake;
    JobQueue m_queue;
    json::Messages m_messages;  ///< Of the current movie, until its probe is reported.
    bool m_collects = false;
    QString m_subject;  ///< The movie that messages refer to.
    int m_running = 0;  ///< Number of jobs that have not ended.
    int m_failures = 0;
    int m_damaged = 0;
    bool m_interrupted = false;
    bool m_endless = false;
    QStringList m_pendingMovies;  ///< Movies that were added during a probe; the oldest is first.
};
