#include "ui/window/JobMenu.h"

#include "convert/ConversionJob.h"
#include "support/base/Texts.h"
#include "ui/look/Icons.h"
#include "ui/window/JobDelegate.h"

#include <QMenu>

#include <optional>

namespace jobmenu {

namespace {

using Command = JobCommands::Command;
using jobrow::Button;

/// Of a command that is a row's button, too.
std::optional<Button> buttonOf(Command command, JobState state) {
    switch (command) {
        case Command::Pause:
        case Command::Continue:
        case Command::StartNow:
            return Button::PauseContinue;
        case Command::Show:
            return state == JobState::Failed ? Button::Explain : Button::Reveal;
        case Command::Remove:
            return Button::Remove;
        default:
            return std::nullopt;
    }
}

QString titleForOne(Command command, JobState state) {
    if (const auto button = buttonOf(command, state)) return JobDelegate::titleOf(*button, state);
    switch (command) {
        case Command::StartNext:
            return Texts::tr("Start Next");
        case Command::Play:
            return Texts::tr("Play");
        case Command::ShowOriginal:
            return Texts::tr("Show the original movie");
        case Command::TryAgain:
            return Texts::tr("Try Again");
        case Command::CopyCommandLine:
            return Texts::tr("Copy command line");
        case Command::CopyReceipt:
            return Texts::tr("Copy Receipt");
        default:
            return {};
    }
}

QString titleForMany(Command command, int count) {
    switch (command) {
        case Command::Pause:
            return Texts::tr("Pause %n Movies", nullptr, count);
        case Command::Continue:
            return Texts::tr("Continue %n Movies", nullptr, count);
        case Command::StartNow:
            return Texts::tr("Start %n Movies Now", nullptr, count);
        case Command::StartNext:
            return Texts::tr("Start %n Movies Next", nullptr, count);
        case Command::Show:
            return Texts::tr("Show %n Files", nullptr, count);
        case Command::ShowOriginal:
            return Texts::tr("Show %n Original Movies", nullptr, count);
        case Command::TryAgain:
            return Texts::tr("Try %n Movies Again", nullptr, count);
        case Command::CopyCommandLine:
            return Texts::tr("Copy %n Command Lines", nullptr, count);
        case Command::CopyReceipt:
            return Texts::tr("Copy %n Receipts", nullptr, count);
        case Command::Remove:
            return Texts::tr("Remove %n Movies", nullptr, count);
        default:
            return {};
    }
}

/// The key is only displayed: the list handles it itself, and the menu must not take it from other controls.
QString withKey(const QString& title, const QKeySequence& key) {
    return key.isEmpty() ? title : title + u'\t' + key.toString(QKeySequence::NativeText);
}

}  // namespace

void fill(QMenu& menu, JobCommands& commands, const JobCommands::Jobs& jobs, ConversionJob* current,
          const std::function<void(ConversionJob*)>& showDetails) {
    const JobState firstState = jobs.isEmpty() || !jobs.first() ? JobState::Queued : jobs.first()->state();
    const auto add = [&](Command command, const QKeySequence& key = {}) {
        const QList<ConversionJob*> fitting = JobCommands::fitting(command, jobs);
        const auto count = static_cast<int>(fitting.size());
        const JobState state = fitting.isEmpty() ? firstState : fitting.first()->state();
        const QString title = count > 1 ? titleForMany(command, count) : titleForOne(command, state);
        QAction* action = menu.addAction(withKey(title, key));
        action->setEnabled(count > 0);
        if (const auto button = buttonOf(command, state))
            action->setIcon(symbolicIcon(JobDelegate::iconOf(*button, state)));
        QObject::connect(action, &QAction::triggered, &commands,
                         [&commands, command, jobs] { commands.perform(command, jobs); });
    };
    const auto addIfFitting = [&](Command command, const QKeySequence& key = {}) {
        if (!JobCommands::fitting(command, jobs).isEmpty()) add(command, key);
    };
    add(JobCommands::pauseOrContinue(jobs), Qt::Key_Space);
    add(Command::StartNext, Qt::ALT | Qt::Key_Home);
    addIfFitting(Command::TryAgain);
    menu.addSeparator();
    add(Command::Play, Qt::CTRL | Qt::Key_P);
    add(Command::Show, Qt::CTRL | Qt::Key_Return);
    addIfFitting(Command::ShowOriginal, Qt::SHIFT | Qt::Key_Return);
    menu.addSeparator();
    QAction* details = menu.addAction(withKey(Texts::tr("Details…"), Qt::Key_Return));
    details->setEnabled(current);
    if (current) {
        QObject::connect(details, &QAction::triggered, current,
                         [current, showDetails] { showDetails(current); });
    }
    add(Command::CopyCommandLine);
    add(Command::CopyReceipt);
    menu.addSeparator();
    add(Command::Remove, Qt::Key_Delete);
}

QString subjectOf(const QList<ConversionJob*>& jobs) {
    if (jobs.size() == 1) return jobs.first()->fileInfo().fileName;
    return Texts::tr("%n Movies", nullptr, static_cast<int>(jobs.size()));
}

}  // namespace jobmenu
