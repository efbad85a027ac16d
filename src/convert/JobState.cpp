#include "convert/JobState.h"

#include "support/base/Text.h"

QString nameOfState(JobState state) {
    switch (state) {
        case JobState::Queued:
            return text::localized("Queued");
        case JobState::Converting:
            return text::localized("Converting");
        case JobState::Paused:
            return text::localized("Paused");
        case JobState::Finished:
            return text::localized("Finished");
        case JobState::Failed:
            return text::localized("Failed");
    }
    return {};
}
