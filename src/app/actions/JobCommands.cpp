#include "app/actions/JobCommands.h"

#include "app/actions/FailureActions.h"
#include "app/queue/JobQueue.h"
#include "app/queue/JobTexts.h"
#include "support/base/Collections.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>

JobCommands::JobCommands(JobQueue& queue, FailureActions& failures, QObject* parent)
    : QObject(parent), m_queue(queue), m_failures(failures) {}

namespace {

using Command = JobCommands::Command;

bool fits(Command command, const ConversionJob& job) {
    const JobState state = job.state();
    switch (command) {
        case Command::Pause:
            return state == JobState::Converting;
        case Command::Continue:
            return state == JobState::Paused;
        case Command::StartNow:
        case Command::StartNext:
        case Command::MoveUp:
        case Command::MoveDown:
            return state == JobState::Queued;
        case Command::Play:
        case Command::CopyReceipt:
            return state == JobState::Finished;
        case Command::Show:
        case Command::ShowOriginal:
            return state == JobState::Converting || state == JobState::Finished;
        case Command::TryAgain:
            return state == JobState::Failed;
        case Command::CopyCommandLine:
            return !job.arguments().isEmpty();
        case Command::Remove:
            return true;
    }
    return false;
}

/// How many jobs the command can be performed for; 0: any number.
qsizetype mostOf(Command command) {
    switch (command) {
        case Command::StartNow:
            return JobCommands::kMostAtOnce;
        case Command::Play:
            return 1;
        default:
            return 0;
    }
}

}  // namespace

QList<ConversionJob*> JobCommands::fitting(Command command, const Jobs& jobs) {
    QList<ConversionJob*> result;
    for (const auto& job : jobs) {
        if (!job) continue;
        const bool isExplained =
            command == Command::Show && jobs.size() == 1 && job->state() == JobState::Failed;
        if (isExplained || fits(command, *job)) result.append(job);
    }
    const qsizetype most = mostOf(command);
    return most > 0 && result.size() > most ? QList<ConversionJob*>() : result;
}

JobCommands::Command JobCommands::pauseOrContinue(const Jobs& jobs) {
    for (const Command command : {Command::Pause, Command::Continue}) {
        if (std::ranges::any_of(jobs, [&](const auto& job) { return job && fits(command, *job); }))
            return command;
    }
    return Command::StartNow;
}

/// A removed job lives on until its signals are delivered.
JobCommands::Jobs JobCommands::stillQueued(const Jobs& jobs) const {
    QSet<const ConversionJob*> queued;
    for (qsizetype row = 0; row < m_queue.count(); ++row)
        queued.insert(m_queue.job(row));
    return collections::filtered(jobs, [&](const auto& job) { return queued.contains(job); });
}

/// A job may remove itself, and others with it.
void JobCommands::forEach(const QList<ConversionJob*>& jobs,
                          const std::function<void(ConversionJob&)>& action) {
    const Jobs alive(jobs.cbegin(), jobs.cend());
    for (const auto& job : alive) {
        if (job) action(*job);
    }
}

void JobCommands::perform(Command command, const Jobs& jobs) {
    const QList<ConversionJob*> chosen = fitting(command, stillQueued(jobs));
    const bool waits = std::ranges::any_of(jobs, [&](const auto& job) { return job && fits(command, *job); });
    if (command == Command::StartNow && waits && chosen.isEmpty())
        Q_EMIT message(Texts::tr("No more than %1 movies can be started at once.").arg(kMostAtOnce));
    if (chosen.isEmpty()) return;
    switch (command) {
        case Command::Pause:
            forEach(chosen, [](ConversionJob& job) { job.pause(); });
            return;
        case Command::Continue:
        case Command::StartNow:
            forEach(chosen, [](ConversionJob& job) { job.continueJob(); });
            return;
        case Command::StartNext:
            m_queue.move(chosen, 0);
            return;
        case Command::MoveUp:
            m_queue.moveUp(chosen);
            return;
        case Command::MoveDown:
            m_queue.moveDown(chosen);
            return;
        case Command::Play:
            play(*chosen.first());
            return;
        case Command::Show:
        case Command::ShowOriginal:
            show(chosen, command == Command::ShowOriginal);
            return;
        case Command::TryAgain:
            forEach(chosen, [this](ConversionJob& job) { m_failures.act(job, FailureAction::TryAgain); });
            return;
        case Command::CopyCommandLine:
            Q_EMIT copied(commandLines(chosen));
            return;
        case Command::CopyReceipt:
            Q_EMIT copied(receiptTexts(chosen));
            return;
        case Command::Remove:
            m_queue.removeJobs(chosen);
            return;
    }
}

void JobCommands::move(const QList<ConversionJob*>& jobs, qsizetype row) {
    m_queue.move(jobs, row);
}

void JobCommands::show(const QList<ConversionJob*>& jobs, bool isOriginal) {
    if (jobs.size() == 1) {
        m_failures.reveal(*jobs.first(), isOriginal);
        return;
    }
    QStringList paths;
    for (const ConversionJob* job : jobs) {
        const MKVFileInfo& info = job->fileInfo();
        paths.append((isOriginal ? info.fileURL : info.destinationURL).toLocalFile());
    }
    sharedDesktop().revealTogether(paths);
}

void JobCommands::play(const ConversionJob& job) {
    const QFileInfo file(job.fileInfo().destinationURL.toLocalFile());
    if (!file.isFile()) {
        Q_EMIT message(Texts::tr("“%1” can't be played, as it is no longer in “%2”.")
                           .arg(file.fileName(), file.absolutePath()));
    } else if (!sharedDesktop().openUrl(QUrl::fromLocalFile(file.absoluteFilePath()))) {
        Q_EMIT message(
            Texts::tr("“%1” can't be played, as there is no program for it.").arg(file.fileName()));
    }
}
