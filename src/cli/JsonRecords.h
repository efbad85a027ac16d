#pragma once

#include "cli/ConsolePresenter.h"
#include "convert/plan/ConversionPlan.h"
#include "probe/MKVFileInfo.h"

#include <QJsonArray>
#include <QJsonObject>

#include <optional>
#include <vector>

/// The objects that `--json` writes. Their keys are a contract with the scripts that read them. Pure
/// functions, any thread.
namespace json {

using Messages = std::vector<ConsolePresenter::Message>;

/// "key", "title" and "message"; the key is null for an alert that has no "don't warn again" box.
QJsonObject message(const ConsolePresenter::Message& message);

/// The record of a probed movie. `bestTrack` is the position of the preselected audio track; `record` is
/// empty for a refused movie.
QJsonObject probed(const QString& file, const std::optional<MKVFileInfo>& record,
                   std::optional<qsizetype> bestTrack, const Messages& messages);

/// A movie that is refused: "file", "accepted" and "messages".
QJsonObject refused(const QString& file, const Messages& messages);

/// "video", "audio", "subtitle", "attachment" or "data".
QString word(PlannedTrack::Kind kind);
/// "copied", "converted" or "leftOut".
QString word(PlannedTrack::Action action);

/// What becomes of each stream, in the order of the plan.
QJsonArray tracks(const ConversionPlan& plan);

/// The plan of an accepted movie, with what schedulers sort by; `arguments` are those of the tool.
QJsonObject planned(const MKVFileInfo& record, const ConversionPlan& plan, const QStringList& arguments,
                    const Messages& messages);

}  // namespace json
