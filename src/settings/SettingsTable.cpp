#include "settings/SettingsTable.h"

#include "settings/Keys.h"
#include "support/store/Defaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <numeric>

namespace settings {

namespace {

using enum Type;

constexpr Setting kTable[] = {
    {"ConversionPreset", Integer, true, 0, "Conversion style: 0 compatible, 1 fast, 2 custom"},
    {"IncludeSurroundTrack", Boolean, true, 0, "Add a second, surround audio track (compatible style)"},
    {"WelcomeShown", Boolean, true, 0, "The notice about the fast style was dismissed"},
    {"HEAACConvert", Boolean, true, 0, "Convert HE-AAC audio instead of copying it"},
    {"DefaultExtension", Integer, true, 0, "Extension of the output: 0 mp4, otherwise m4v"},
    {"AACBitrate", Integer, true, 1,
     "Stereo AAC: 0 to 3 are 96k, 128k, 160k, 192k; 4 to 7 quality 9, 7, 5, 4"},
    {"AACSurroundBitrate", Integer, true, 1,
     "5.1 AAC: 0 to 3 are 224k, 256k, 384k, 448k; 4 to 7 quality 9, 7, 5, 4"},
    {"AC3StereoBitrate", Integer, true, 1, "Stereo AC3: 0 to 3 are 160k, 192k, 224k, 256k"},
    {"AC3SurroundBitrate", Integer, true, 1, "5.1 AC3: 0 to 3 are 384k, 448k, 512k, 576k"},
    {"AudioVolume", Integer, true, 100, "Audio volume in percent; 99 to 101 leave it as it is"},
    {"AutoAdd", Boolean, true, 0, "Queue an added movie at once, without asking"},
    {"AutoClean", Boolean, true, 0, "Take a job off the list when it finished"},
    {"AutoRemove", Boolean, true, 0, "Remove the source after a successful conversion"},
    {"AutoRemoveType", Integer, true, 0, "How the source is removed: 0 to the trash, otherwise for good"},
    {"Conversions", Integer, true, 0, "Unused; kept for settings of older versions"},
    {"HasUpgradedFromPre13", Boolean, true, 0, "DefaultDestination was renumbered for version 1.3"},
    {"ExternalSubtitleEncoding", Integer, true, 0,
     "Text encoding of subtitle files: below 2 none, else a list position"},
    {"DefaultAudio", Integer, true, 0,
     "Preselected language: 0 yours; 2 to 8 eng, ger, fre, spa, chi, jpn, rus"},
    {"DefaultDestination", Integer, true, 0,
     "Preselected destination: 0 ask, 1 next to the source, 3 and up a folder"},
    {"FixSubtitleDuration", Boolean, true, 1, "Have overlapping subtitles shortened"},
    {"DestinationBookmarks", DataArray, true, 0, "Your destination folders"},
    {"DestinationNames", StringArray, true, 0, "Their names"},
    {"DisableBuiltinSubtitles", Boolean, true, 1, "Leave the source's own subtitles out"},
    {"QuitAfterConversion", Boolean, true, 0, "Quit when no job converts any more and none has failed"},
    {"IncludeSurroundTrackTranscoded", Boolean, true, 1,
     "Transcode the second track where it cannot be copied"},
    {"DTSDownmix", Boolean, true, 0, "Mix 5.1 DTS down to stereo (fast style)"},
    {"AC3Downmix", Boolean, true, 0, "Mix 5.1 AC3 down to stereo (fast style)"},
    {"CustomAC351AudioHandling", Integer, true, 4,
     "Custom style, 5.1 AC3: 0 AAC, 1 AAC 5.1, 2 AC3, 3 AC3 5.1, 4 copy"},
    {"CustomAC3AudioHandling", Integer, true, 4, "Custom style, stereo AC3"},
    {"CustomDTSAudioHandling", Integer, true, 2, "Custom style, stereo DTS"},
    {"CustomDTS51AudioHandling", Integer, true, 3, "Custom style, 5.1 DTS"},
    {"CustomFLACAudioHandling", Integer, true, 2, "Custom style, stereo FLAC"},
    {"CustomFLAC51AudioHandling", Integer, true, 3, "Custom style, 5.1 FLAC"},
    {"CustomVorbisAudioHandling", Integer, true, 2, "Custom style, Vorbis"},
    {"CustomMP3AudioHandling", Integer, true, 2, "Custom style, MP3"},
    {"CustomUnknownAudioHandling", Integer, true, 2, "Custom style, any other stereo audio"},
    {"CustomUnknown51AudioHandling", Integer, true, 3, "Custom style, any other 5.1 audio"},
    {"Usages", Integer, true, 0, "Number of conversions"},

    {"EAC3Convert", Boolean, false, 0, "Treat E-AC3 as a codec of its own instead of as AC3"},
    {"DontConvertAACMain", Boolean, false, 0, "Copy AAC of the Main profile"},
    {"ProduceStreamableFiles", Boolean, false, 0,
     "Put the index first, so that playing starts while downloading"},
    {"ConcurrentJobs", Boolean, false, 0, "Convert several movies at a time"},
    {"ConcurrentJobCount", Integer, false, 0, "How many at a time, less two: 0 means two"},
    {"InsertJobsAtBottom", Boolean, false, 0, "Put new jobs at the end of the queue instead of its top"},
    {"WatchfolderActive", Boolean, false, 0, "The watch folder is on"},
    {"WatchfolderBookmark", Data, false, 0, "The watch folder"},
    {"AbsentDestinations", DataArray, false, 0,
     "Destination folders that are not there now, at their places in the list"},
    {"AbsentDefaultDestination", Data, false, 0, "The one of them that was preselected"},
    {"AbsentWatchfolderBookmark", Data, false, 0, "The watch folder while it is not there"},
    {"AbsentWatchfolderActive", Boolean, false, 0, "It is watched again as soon as it is there"},
    {"convertedFileCount", Integer, false, 0, "Number of converted files"},
};

size_t editDistance(const QString& a, const QString& b) {
    std::vector<size_t> row(static_cast<size_t>(b.size()) + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const QChar letter : a) {
        size_t diagonal = row[0]++;
        for (qsizetype j = 0; j < b.size(); ++j) {
            const auto at = static_cast<size_t>(j) + 1;
            const size_t substituted = diagonal + (letter == b[j] ? 0 : 1);
            diagonal = row[at];
            row[at] = std::min({row[at] + 1, row[at - 1] + 1, substituted});
        }
    }
    return row.back();
}

std::optional<QVariantList> listFromText(const QString& text, bool bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray()) return std::nullopt;
    QVariantList list;
    const QJsonArray array = document.array();
    for (const auto& element : array) {
        if (!element.isString()) return std::nullopt;
        list.append(bytes ? QVariant(element.toString().toUtf8()) : QVariant(element.toString()));
    }
    return list;
}

}  // namespace

QVariant Setting::defaultValue() const {
    if (!registered) return {};
    if (type == DataArray || type == StringArray) return QVariantList();
    return static_cast<qint64>(integerDefault);
}

std::span<const Setting> all() {
    return kTable;
}

const Setting* find(const QString& key) {
    const auto* found =
        std::ranges::find_if(kTable, [&](const Setting& s) { return key == QLatin1StringView(s.key); });
    return found == std::end(kTable) ? nullptr : found;
}

void registerDefaults() {
    QVariantMap defaults;
    for (const Setting& setting : kTable) {
        if (setting.registered) defaults.insert(setting.key, setting.defaultValue());
    }
    standardUserDefaults().registerDefaults(defaults);
}

std::optional<QVariant> valueFromText(Type type, const QString& text) {
    switch (type) {
        case Integer:
        case Boolean: {
            static const QRegularExpression wholeNumber(QStringLiteral("^[+-]?[0-9]+$"));
            bool fits = false;
            const qint64 number = text.toLongLong(&fits);
            if (!fits || !wholeNumber.match(text).hasMatch()) return std::nullopt;
            return number;
        }
        case Data:
            return text.toUtf8();
        case DataArray:
        case StringArray: {
            auto list = listFromText(text, type == DataArray);
            if (!list) return std::nullopt;
            return QVariant(*list);
        }
    }
    return std::nullopt;
}

QString textFromValue(const QVariant& value) {
    if (value.typeId() != QMetaType::QVariantList) return value.toString();
    QJsonArray array;
    const QVariantList list = value.toList();
    for (const QVariant& element : list)
        array.append(element.toString());
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

int registeredInt(const QString& key) {
    const Setting* setting = find(key);
    return setting ? setting->integerDefault : 0;
}

QStringList nearestKeys(const QString& key) {
    constexpr size_t kMost = 3;
    std::vector<std::pair<size_t, QString>> ranked;
    for (const Setting& setting : kTable) {
        const QString candidate(setting.key);
        ranked.emplace_back(editDistance(key.toLower(), candidate.toLower()), candidate);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList nearest;
    for (size_t i = 0; i < kMost; ++i)
        nearest.append(ranked[i].second);
    return nearest;
}

}  // namespace settings
