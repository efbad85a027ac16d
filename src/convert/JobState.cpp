#include "convert/JobState.h"

#include "support/base/Texts.h"

QString nameOfState(JobState state) {
    switch (state) {
        case JobState::Queued:
            return Texts::tr("Queued");
        case JobState::Converting:
            return Texts::tr("Converting");
        case JobState::Paused:
            return Texts::tr("Paused");
        case JobState::Finished:
            return Texts::tr("Finished");
        case JobState::Failed:
            return Texts::tr("Failed");
    }
    return {};
}
