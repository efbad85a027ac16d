#pragma once

#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "cli/CommandLine.h"
#include "cli/ConvertReport.h"
#include "cli/Inputs.h"
#include "convert/ExistingOutput.h"
#include "feedback/PXApplicationDelegate.h"

#include <QObject>

#include <functional>
#include <memory>
#include <stop_token>

/// Converts a batch of movies with the same intake and queue as the window; the options replace the choices
/// of its add sheet. The next two movies are probed while one converts, and no more: the memory does not
/// depend on the number of movies. Ends the event loop when every movie has ended. Main thread only.
class ConvertCommand : public QObject {
    Q_OBJECT

public:
    ConvertCommand(const ConvertOptions& options, ConsolePresenter& presenter);
    ~ConvertCommand() override;

    /// Call it from the event loop.
    void begin(const Inputs& inputs);
    /// Keeps running when every movie has ended, since more will follow. Movies are probed when they come.
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
    existingoutput::Place placeFor(const QString& source) const;
    bool chooseDestination(MKVFileInfo& info, QString& problem) const;
    std::unique_ptr<ConversionJob> makeJob(MKVFileInfo info, qsizetype audioTrackIndex);
    void convertAtHand(qsizetype audioTrackIndex, int tries);
    void addToQueue(const MKVFileInfo& info, qsizetype audioTrackIndex, int tries);
    bool isLeft(const QString& file, const existingoutput::Found& found);
    void findExisting(const MKVFileInfo& info, qsizetype audioTrackIndex,
                      std::function<void(const existingoutput::Found&)> found);
    void considerAgain(const ConversionJob& job);
    void watch(ConversionJob* job);
    void onEnded(ConversionJob* job);
    void refuse(const QString& file, const QString& message, bool wasShown);
    void refuseAtHand(const QString& message, bool wasShown);
    void reportProbe(const QString& file, const std::optional<MKVFileInfo>& record,
                     std::optional<qsizetype> best);
    void addNextMovie();
    bool takesOneMore() const;
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
    QStringList m_pendingMovies;  ///< Not yet probed; the next one is first.
    QStringList m_searched;       ///< Movies whose existing outputs are looked at, each in a thread.
    std::stop_source m_stop;      ///< Of these looks.
};
