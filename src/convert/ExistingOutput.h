#pragma once

#include "convert/proof/ExistingProof.h"

#include <QString>

#include <stop_token>

/// What earlier runs, of this or another machine, have made of a movie. Any thread; errors count as nothing
/// found.
namespace existingoutput {

enum class State {
    None,
    Whole,      ///< An output is there that was compared with this source, and neither has changed.
    InProgress  ///< A run is writing it, or seems to.
};

struct Found {
    State state = State::None;
    QString path;     ///< Of the output.
    Receipt receipt;  ///< Of a whole one.
};

/// Whether the attributes of the file say that a run made or makes it, of whatever movie.
bool isOutput(const QString& path);

/// Where an output may be.
struct Place {
    QString destination;  ///< The name that an output gets if it is free, else it gets a numbered one.
    bool isOnly = false;  ///< There is no other.
};

/// What the attributes of the files say; reads none.
Found look(const QString& source, const Place& place);

/// The same, and compares outputs that have no record, which takes as long as reading both files.
/// `existing.output` is ignored. A new record is kept with a whole output.
Found find(const proof::Existing& existing, const Place& place, const std::stop_token& stop);

}  // namespace existingoutput
