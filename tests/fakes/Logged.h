#pragma once

#include "support/base/Format.h"
#include "support/store/Defaults.h"

#include <QStringList>

/// The messages of a level that were logged since the TestHome was created, in the order of their slots.
inline QStringList logged(int level = 3) {
    QStringList messages;
    for (int position = 0; position < 10; ++position) {
        const auto line = defaultString(makeString("quillonlib_asl_lev%i_pos%i", level, position));
        if (line) messages.append(line->section(" message: ", 1));
    }
    return messages;
}
