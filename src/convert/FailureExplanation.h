#pragma once

#include "convert/RunEnding.h"

#include <QString>
#include <QStringList>

/// Explains why a job failed, from its ending and the output of the tool. Pure; any thread.
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
    QString message;
    bool offersSupport = false;  ///< The reason is unknown: the user may send the details to support.
};

Explanation explain(const Facts& facts);

/// Whether the line contains a text that runending::decide() or explain() searches for.
bool explainsSomething(QStringView line);

}  // namespace failure
