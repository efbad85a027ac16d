#include "app/queue/StoredJob.h"

#include "support/base/Text.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace {

constexpr std::array kStates{JobState::Queued, JobState::Converting, JobState::Paused, JobState::Finished,
                             JobState::Failed};
constexpr std::array kActions{FailureAction::TryAgain,          FailureAction::WithoutSubtitleFile,
                              FailureAction::ReadSubtitlesAs,   FailureAction::WithoutEmbeddedSubtitles,
                              FailureAction::ConvertWhatIsLeft, FailureAction::ChooseAnotherFolder,
                              FailureAction::ShowPreference,    FailureAction::SendToSupport};

QString pathOf(const std::optional<FileUrl>& url) {
    return url ? url->toLocalFile() : QString();
}

QJsonObject toJson(const JobOverrides& overrides) {
    QJsonObject json;
    if (overrides.keepDamaged) json["keepDamaged"] = true;
    if (overrides.withoutSubtitleFile) json["withoutSubtitleFile"] = true;
    if (overrides.withoutEmbeddedSubtitles) json["withoutEmbeddedSubtitles"] = true;
    if (overrides.subtitleEncoding) {
        const settings::Choices& encodings = settings::kChoices<SubtitleEncoding>;
        const settings::Choice* choice = encodings.find(static_cast<qint64>(*overrides.subtitleEncoding));
        if (choice) json["subtitleEncoding"] = choice->word;
    }
    return json;
}

JobOverrides overridesOf(const QJsonObject& json) {
    JobOverrides overrides;
    overrides.keepDamaged = json["keepDamaged"].toBool();
    overrides.withoutSubtitleFile = json["withoutSubtitleFile"].toBool();
    overrides.withoutEmbeddedSubtitles = json["withoutEmbeddedSubtitles"].toBool();
    if (const QJsonValue word = json["subtitleEncoding"]; word.isString()) {
        const settings::Choice* choice = settings::kChoices<SubtitleEncoding>.find(word.toString());
        if (choice) overrides.subtitleEncoding = static_cast<SubtitleEncoding>(choice->number);
    }
    return overrides;
}

/// Only what differs from a job without choices.
void insert(QJsonObject& json, const char* key, const QString& text) {
    if (!text.isEmpty()) json[QLatin1StringView(key)] = text;
}

}  // namespace

QString wordOf(JobState state) {
    switch (state) {
        case JobState::Queued:
            return "queued";
        case JobState::Converting:
            return "converting";
        case JobState::Paused:
            return "paused";
        case JobState::Finished:
            return "finished";
        case JobState::Failed:
            return "failed";
    }
    return {};
}

JobState stateOfWord(const QString& word) {
    for (const JobState state : kStates) {
        if (wordOf(state) == word) return state;
    }
    return JobState::Queued;
}

StoredJob storedJob(const ConversionJob& job) {
    const MKVFileInfo& info = job.fileInfo();
    StoredJob stored;
    stored.source = info.fileURL.toLocalFile();
    stored.destination = job.queuedDestination();
    stored.subtitleFile = pathOf(info.subtitleFileURL);
    stored.openedFolder = pathOf(info.securityURL);
    stored.mayReplaceDestination = job.mayReplaceDestination();
    stored.audioTrack = job.audioTrackIndex();
    stored.audioText = info.audioTrackInformation.value(stored.audioTrack).text;
    stored.overrides = job.overrides();
    stored.state = job.state();
    // Of a long output, as much as a mail to support would show.
    constexpr qsizetype kKept = 4000;
    if (stored.state == JobState::Failed)
        stored.failure = {job.explanation(), job.arguments(), text::clamp(job.jobOutput(), kKept)};
    return stored;
}

QJsonObject toJson(const PastFailure& failure) {
    QJsonArray actions;
    for (const FailureAction action : failure.explanation.actions)
        actions.append(wordOf(action));
    QJsonObject json{
        {"title", failure.explanation.title}, {"message", failure.explanation.message}, {"actions", actions}};
    insert(json, "reason", failure.explanation.reason);
    insert(json, "preference", failure.explanation.preference);
    if (!failure.arguments.isEmpty()) json["arguments"] = QJsonArray::fromStringList(failure.arguments);
    insert(json, "output", failure.output);
    return json;
}

PastFailure pastFailure(const QJsonObject& json) {
    PastFailure failure;
    failure.explanation.title = json["title"].toString();
    failure.explanation.reason = json["reason"].toString();
    failure.explanation.message = json["message"].toString();
    failure.explanation.preference = json["preference"].toString();
    const QJsonArray words = json["actions"].toArray();
    for (const QJsonValue word : words) {
        const auto* const action =
            std::ranges::find_if(kActions, [&](FailureAction a) { return wordOf(a) == word.toString(); });
        if (action != kActions.end()) failure.explanation.actions.append(*action);
    }
    failure.arguments = json["arguments"].toVariant().toStringList();
    failure.output = json["output"].toString();
    return failure;
}

QJsonObject toJson(const StoredJob& job) {
    QJsonObject json{{"source", job.source}, {"destination", job.destination}, {"state", wordOf(job.state)}};
    insert(json, "subtitleFile", job.subtitleFile);
    insert(json, "openedFolder", job.openedFolder);
    if (job.mayReplaceDestination) json["mayReplace"] = true;
    if (job.audioTrack != 0) json["audioTrack"] = job.audioTrack;
    insert(json, "audio", job.audioText);
    if (job.overrides != JobOverrides()) json["overrides"] = toJson(job.overrides);
    if (job.state == JobState::Failed) json["failure"] = toJson(job.failure);
    return json;
}

std::optional<StoredJob> storedJob(const QJsonObject& json) {
    StoredJob job;
    job.source = json["source"].toString();
    job.destination = json["destination"].toString();
    if (job.source.isEmpty() || job.destination.isEmpty()) return std::nullopt;
    job.subtitleFile = json["subtitleFile"].toString();
    job.openedFolder = json["openedFolder"].toString();
    job.mayReplaceDestination = json["mayReplace"].toBool();
    job.audioTrack = qMax<qsizetype>(0, json["audioTrack"].toInteger());
    job.audioText = json["audio"].toString();
    job.overrides = overridesOf(json["overrides"].toObject());
    job.state = stateOfWord(json["state"].toString());
    if (job.state == JobState::Failed) job.failure = pastFailure(json["failure"].toObject());
    return job;
}
