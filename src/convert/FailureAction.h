#pragma once

#include <QLatin1StringView>

/// What the user can do about a failed job, for that movie alone. Pure; any thread.
enum class FailureAction {
    TryAgain,
    WithoutSubtitleFile,
    ReadSubtitlesAs,  ///< Read the subtitle file in another encoding.
    WithoutEmbeddedSubtitles,
    ConvertWhatIsLeft,  ///< Keep the output although a part of the movie is missing in it.
    ChooseAnotherFolder,
    ShowPreference,  ///< Show the setting that the explanation names.
    SendToSupport,
};

/// The word of an action in JSON.
constexpr QLatin1StringView wordOf(FailureAction action) {
    using enum FailureAction;
    switch (action) {
        case TryAgain:
            return QLatin1StringView("tryAgain");
        case WithoutSubtitleFile:
            return QLatin1StringView("withoutSubtitleFile");
        case ReadSubtitlesAs:
            return QLatin1StringView("readSubtitlesAs");
        case WithoutEmbeddedSubtitles:
            return QLatin1StringView("withoutEmbeddedSubtitles");
        case ConvertWhatIsLeft:
            return QLatin1StringView("convertWhatIsLeft");
        case ChooseAnotherFolder:
            return QLatin1StringView("chooseAnotherFolder");
        case ShowPreference:
            return QLatin1StringView("showPreference");
        case SendToSupport:
            return QLatin1StringView("sendToSupport");
    }
    return {};
}
