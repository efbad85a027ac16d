#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// What Ravelin finds on this machine, for a page that a user can send to support: no names of movies, of
/// users or of machines; the user's home folder is "~".
namespace diagnosis {

enum class State {
    Fine,
    Limited,  ///< Something is not there that Ravelin can do without.
    Broken    ///< Movies cannot be converted, or settings cannot be stored.
};

struct Finding {
    const char* topic;  ///< A fixed word for programs, such as "tool".
    State state = State::Fine;
    QString text;  ///< One line, for people.
};

/// Looks at everything, and at `folders`, where movies are or outputs go. Starts the tool once; asks the
/// buses; creates and removes a file in the application's own folders and in `folders`. Blocks, for as long
/// as a disk that does not answer. Main thread only.
QList<Finding> findings(const QStringList& folders);

}  // namespace diagnosis
