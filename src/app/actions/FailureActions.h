#pragma once

#include "convert/FailureExplanation.h"
#include "support/alerts/AlertPresenter.h"

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

class ConversionJob;
class FilePanels;
class JobQueue;

/// What opening a job of the queue does, and what the user can do about a failed one. The actions concern
/// that movie alone: the stored settings stay as they are. Main thread only.
class FailureActions : public QObject {
    Q_OBJECT

public:
    /// Both must outlive this object.
    FailureActions(JobQueue& queue, FilePanels& panels, QObject* parent = nullptr);

    /// Shows the job's output in the file manager (with Shift the input). For a failed job, explains the
    /// failure and offers the actions that fit; blocks until the user has chosen.
    void reveal(ConversionJob& job, bool shiftIsHeld);

    /// Performs the action for a failed job; does nothing for any other. A job that is to be converted again
    /// is queued in its row and starts as the queue allows. `argument` is the word of the encoding for
    /// ReadSubtitlesAs and the path of the folder for ChooseAnotherFolder; without it the user is asked.
    void act(ConversionJob& job, FailureAction action, const QString& argument = {});

    /// An explanation with a button for each action that fits.
    struct Offer {
        Alert alert;
        QList<std::optional<FailureAction>> actions;  ///< Of each button.
    };
    static Offer offerFor(const failure::Explanation& told, const QString& movie);

Q_SIGNALS:
    /// The user wants to see that setting in the preferences.
    void preferenceRequested(const QString& key);
    /// The job is to be converted again, but its movie was never probed in this session: probe it first.
    void probeRequested(ConversionJob& job);

private:
    static QString titleOf(FailureAction action);
    void readSubtitlesAs(ConversionJob& job, const QString& encoding);
    void askForEncoding(ConversionJob& job);
    void moveTo(ConversionJob& job, const QString& folder);
    void askForFolder(ConversionJob& job);
    void convertAgain(ConversionJob& job);

    JobQueue& m_queue;
    FilePanels& m_panels;
};
