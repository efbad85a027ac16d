#pragma once

#include "convert/ConversionJob.h"

#include <QJsonObject>
#include <QString>

#include <optional>

/// What is stored of a job: the choices that its plan follows from, and how far it got. The movie is probed
/// again when the job comes back. A value; any thread.
struct StoredJob {
    QString source;
    QString destination;
    QString subtitleFile;  ///< Empty: none.
    QString openedFolder;  ///< See MKVFileInfo::securityURL; empty: none.
    bool mayReplaceDestination = false;
    qsizetype audioTrack = 0;
    QString audioText;  ///< AudioEntry::text of that track; empty: there is none.
    JobOverrides overrides;
    JobState state = JobState::Queued;
    PastFailure failure;  ///< Of a failed job.
};

/// Main thread only.
StoredJob storedJob(const ConversionJob& job);

QJsonObject toJson(const StoredJob& job);
/// Empty if there is no source or no destination. Everything else that is missing or makes no sense counts as
/// not chosen.
std::optional<StoredJob> storedJob(const QJsonObject& json);

/// "queued", "converting" and so on.
QString wordOf(JobState state);
/// Queued for any other word.
JobState stateOfWord(const QString& word);
QJsonObject toJson(const PastFailure& failure);
PastFailure pastFailure(const QJsonObject& json);
