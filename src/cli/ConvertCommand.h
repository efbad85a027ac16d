#pragma once

#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "cli/CommandLine.h"
#include "cli/ConvertReport.h"
#include "cli/Inputs.h"
#include "feedback/PXApplicationDelegate.h"

#include <QObject>

#include <memory>

/// One batch of movies through the same intake and queue as in the window, the questions of its add sheet
/// answered by the options. Ends the event loop when every movie has ended.
class ConvertCommand : public QObject {
    Q_OBJECT

public:
    ConvertCommand(const ConvertOptions& options, ConsolePresenter& presenter);
    ~ConvertCommand() override;

    /// Call it from the event loop.
    void begin(const Inputs& inputs);
    /// Goes on when every movie has ended: more are to come. A job that ended is forgotten.
    void setEndless(bool endless);
    /// One more movie.
    void add(const QString& path);
    /// Ends what runs and drops what waits; nothing half-written is left.
    void interrupt();

    int failures() const { return m_failures; }

private:
    void onMessage(const ConsolePresenter::Message& message);
    void takeAccepted();
    void takeRejected(const QString& path);
    std::optional<qsizetype> chooseAudio(const QString& file, std::optional<qsizetype> best);
    bool chooseDestination(MKVFileInfo& info, QString& problem) const;
    void addToQueue(MKVFileInfo info, qsizetype audioTrackIndex);
    void watch(ConversionJob* job);
    void onEnded(ConversionJob* job);
    void refuse(const QString& file, const QString& message, bool wasShown);
    void refuseAtHand(const QString& message, bool wasShown);
    void reportProbe(const QString& file, const std::optional<MKVFileInfo>& record,
                     std::optional<qsizetype> best);
    void takeNext();
    void endIfDone();

    const ConvertOptions m_options;
    ConsolePresenter& m_presenter;
    std::unique_ptr<ConvertReport> m_report;
    PXApplicationDelegate m_usages;
    FileIntake m_intake;
    JobQueue m_queue;
    json::Messages m_messages;  ///< Of the movie at hand, until its probe is reported.
    bool m_collects = false;
    QString m_subject;  ///< The movie that a message is about.
    int m_running = 0;  ///< Queued and not ended.
    int m_failures = 0;
    bool m_interrupted = false;
    bool m_endless = false;
    QStringList m_toCome;  ///< Movies that came while another was looked into, first come first.
};
