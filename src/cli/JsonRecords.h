#pragma once

#include "cli/ConsolePresenter.h"
#include "probe/MKVFileInfo.h"

#include <QJsonObject>

#include <optional>
#include <vector>

/// The objects that `--json` writes. Their keys are a contract with the scripts that read them.
namespace json {

using Messages = std::vector<ConsolePresenter::Message>;

/// "key", "title" and "message"; the key is null for an alert without don't-warn-again.
QJsonObject message(const ConsolePresenter::Message& message);

/// A probed movie; `bestTrack` is the position of the preselected audio track. A refused movie has no record.
QJsonObject probed(const QString& file, const std::optional<MKVFileInfo>& record,
                   std::optional<qsizetype> bestTrack, const Messages& messages);

}  // namespace json
