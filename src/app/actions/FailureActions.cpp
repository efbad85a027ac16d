#include "app/actions/FailureActions.h"

#include "app/actions/SupportMail.h"
#include "app/queue/JobQueue.h"
#include "settings/EncodingNames.h"
#include "settings/Settings.h"
#include "support/alerts/Alert.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/desktop/FilePanels.h"

#include <QFileInfo>
#include <QPointer>

FailureActions::FailureActions(JobQueue& queue, FilePanels& panels, QObject* parent)
    : QObject(parent), m_queue(queue), m_panels(panels) {}

QString FailureActions::titleOf(FailureAction action) {
    using enum FailureAction;
    switch (action) {
        case TryAgain:
            return Texts::tr("Try Again");
        case WithoutSubtitleFile:
            return Texts::tr("Without Subtitle File");
        case ReadSubtitlesAs:
            return Texts::tr("Read Subtitles As…");
        case WithoutEmbeddedSubtitles:
            return Texts::tr("Without Embedded Subtitles");
        case ConvertWhatIsLeft:
            return Texts::tr("Convert What Is Left");
        case ChooseAnotherFolder:
            return Texts::tr("Choose Another Folder…");
        case ShowPreference:
            return Texts::tr("Show the Preference");
        case SendToSupport:
            return Texts::tr("Send to support");
    }
    return {};
}

FailureActions::Offer FailureActions::offerFor(const failure::Explanation& told, const QString& movie) {
    Offer offer;
    offer.alert.title = told.title;
    offer.alert.message = told.message;
    offer.alert.subject = Texts::tr("Movie: %1").arg(movie);
    const auto add = [&](const AlertButton& button, std::optional<FailureAction> action) {
        offer.alert.buttons.push_back(button);
        offer.actions.append(action);
    };
    // First the buttons of an explanation that nothing can be done about.
    if (told.offersSupport()) {
        add(titleOf(FailureAction::SendToSupport), FailureAction::SendToSupport);
        add(AlertButton::cancelling(Texts::tr("Cancel")), std::nullopt);
    } else {
        add(AlertButton::cancelling(Texts::tr("OK")), std::nullopt);
    }
    for (const FailureAction action : told.actions) {
        if (action != FailureAction::SendToSupport) add(titleOf(action), action);
    }
    return offer;
}

void FailureActions::reveal(ConversionJob& job, bool shiftIsHeld) {
    const MKVFileInfo& info = job.fileInfo();
    if (job.state() != JobState::Failed) {
        sharedDesktop().reveal((shiftIsHeld ? info.fileURL : info.destinationURL).toLocalFile());
        return;
    }
    const Offer offer = offerFor(job.explanation(), info.fileName);
    // The job may be removed while the alert is open.
    const QPointer<ConversionJob> alive(&job);
    const long response = alert_described(offer.alert);
    const auto action = offer.actions.value(static_cast<qsizetype>(response - kAlertFirstButton));
    if (alive && action) act(*alive, *action);
}

void FailureActions::act(ConversionJob& job, FailureAction action, const QString& argument) {
    if (job.state() != JobState::Failed) return;
    using enum FailureAction;
    switch (action) {
        case TryAgain:
            convertAgain(job);
            return;
        case WithoutSubtitleFile:
            job.overrides().withoutSubtitleFile = true;
            convertAgain(job);
            return;
        case ReadSubtitlesAs:
            argument.isEmpty() ? askForEncoding(job) : readSubtitlesAs(job, argument);
            return;
        case WithoutEmbeddedSubtitles:
            job.overrides().withoutEmbeddedSubtitles = true;
            convertAgain(job);
            return;
        case ConvertWhatIsLeft:
            job.overrides().keepDamaged = true;
            convertAgain(job);
            return;
        case ChooseAnotherFolder:
            argument.isEmpty() ? askForFolder(job) : moveTo(job, argument);
            return;
        case ShowPreference:
            Q_EMIT preferenceRequested(job.explanation().preference);
            return;
        case SendToSupport:
            mail::open(conversionSupportMail(job.arguments(), job.jobOutput(), job.fileInfo()));
            return;
    }
}

void FailureActions::convertAgain(ConversionJob& job) {
    if (job.isUnprobed()) {
        Q_EMIT probeRequested(job);
        return;
    }
    job.queueAgain();
    m_queue.startNextJobInQueue();
}

void FailureActions::readSubtitlesAs(ConversionJob& job, const QString& encoding) {
    const settings::Choice* choice = settings::ExternalSubtitleEncoding.choices.find(encoding);
    if (!choice) {
        alert_apptitled(Texts::tr("There is no encoding “%1”.").arg(encoding), Texts::tr("OK"));
        return;
    }
    job.overrides().subtitleEncoding = static_cast<SubtitleEncoding>(choice->number);
    convertAgain(job);
}

void FailureActions::askForEncoding(ConversionJob& job) {
    const QPointer<ConversionJob> alive(&job);
    const QList<EncodingName> encodings = subtitleEncodings();
    QStringList titles;
    for (const EncodingName& encoding : encodings)
        titles.append(encoding.title);
    qsizetype index = 0;
    const QString prompt =
        Texts::tr("How is the subtitle file of “%1” encoded?").arg(job.fileInfo().fileName);
    const long response =
        alert_selection_popup(prompt, {Texts::tr("Convert"), Texts::tr("Cancel")}, titles, index);
    if (response != kAlertFirstButton || !alive || alive->state() != JobState::Failed) return;
    if (index < 0 || index >= encodings.size()) return;
    alive->overrides().subtitleEncoding = encodings[index].encoding;
    convertAgain(*alive);
}

void FailureActions::askForFolder(ConversionJob& job) {
    const QString before = QFileInfo(job.queuedDestination()).path();
    m_panels.chooseFolder(FilePanels::Over::MainWindow, before,
                          [this, alive = QPointer(&job)](const QString& folder) {
                              if (alive && alive->state() == JobState::Failed) moveTo(*alive, folder);
                          });
}

void FailureActions::moveTo(ConversionJob& job, const QString& folder) {
    if (m_queue.changeFolder(job, folder)) {
        convertAgain(job);
    } else {
        alert_apptitled(text::localized(JobQueue::kNotWriteable), Texts::tr("OK"));
    }
}
