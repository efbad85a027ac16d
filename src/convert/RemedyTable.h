#pragma once

#include "convert/RunEnding.h"
#include "convert/plan/ConversionPlan.h"

#include <QString>
#include <QStringList>

#include <optional>

/// Which variation of a conversion may avoid what went wrong with the usual arguments. Pure; any thread.
namespace remedies {

/// How a run ended.
struct Seen {
    const RunEnding& ending;
    QString toolOutput;
    QString destination;  ///< The path of the output.
};

struct Next {
    Remedies remedies;  ///< Those that were applied before, and at least one more.
    QStringList notes;  ///< What is done differently now, in words for the user.
    QString name;       ///< For the log.
};

/// Empty: no remedy fits that was not applied before.
std::optional<Next> next(const Remedies& applied, const Seen& seen);

}  // namespace remedies
