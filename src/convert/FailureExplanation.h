#pragma once

#include "convert/FailureAction.h"
#include "convert/RunEnding.h"

#include <QList>
#include <QString>
#include <QStringList>

/// Explains why a job failed and what can be done about it, from its ending and the output of the tool. Pure;
/// any thread.
namespace failure {

struct Facts {
    RunEnding ending;
    QString output;         ///< What the tool said.
    QStringList arguments;  ///< The arguments of the tool.
    bool embeddedSubtitlesWereUsed = false;
    bool hasSubtitleFile = false;
};

struct Explanation {
    QString title;
    QString reason;  ///< In a few words, without a full stop; may be empty.
    QString message;
    QList<FailureAction> actions;  ///< What may help; the most helpful first.
    QString preference;            ///< The key of the setting for ShowPreference.

    /// In one line.
    QString inShort() const { return reason.isEmpty() ? message.section(u'\n', 0, 0) : reason; }
    /// The reason is unknown: the user may send the details to support.
    bool offersSupport() const { return actions.contains(FailureAction::SendToSupport); }
};

Explanation explain(const Facts& facts);

/// Whether the line contains a text that runending::decide() or explain() searches for.
bool explainsSomething(QStringView line);

}  // namespace failure
