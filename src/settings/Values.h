#pragma once

#include <QLatin1StringView>
#include <QtGlobal>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

/// The values of the settings: an enum for each kind, and the list of its numbers and words. The numbers are
/// stored in the settings file; for enums without named values the list defines them. Constants; any thread.

/// How audio is handled.
enum class ConversionStyle : int { Compatible, Fast, Custom };

/// What happens to a movie's audio track.
enum class ConversionMethod : int { AacStereo, AacSurround, Ac3Stereo, Ac3Surround, Copy };

enum class OutputExtension : int { Mp4, M4v };

/// How far the conversion tool is restricted.
enum class CageMode : int {
    Off,
    AsAvailable,  ///< As far as the system can.
    Strict        ///< It is not started where the system cannot restrict it completely.
};

/// How the source of a conversion is removed.
enum class SourceRemoval : int { Trash, Delete };

enum class AacRate : int {};
enum class AacSurroundRate : int {};
enum class Ac3Rate : int {};
enum class Ac3SurroundRate : int {};

/// The language of the preselected audio track; 0: the user's languages.
enum class AudioLanguage : int {};

/// The text encoding of subtitle files; 0: none is passed to the tool.
enum class SubtitleEncoding : int {};
/// No longer used; means none.
inline constexpr SubtitleEncoding kRetiredSubtitleEncoding{1};

namespace settings {

/// An allowed value and its word, which is used on the command line and in the interface files and, where it
/// is one of the tool's words, for the tool.
struct Choice {
    template <class Value>
    constexpr Choice(Value value, const char* itsWord) : number(static_cast<qint64>(value)), word(itsWord) {}

    qint64 number;
    QLatin1StringView word;
};

/// The allowed values of a setting. Empty: every value of its type is allowed.
struct Choices {
    std::span<const Choice> list;
    std::optional<qint64> otherwise;  ///< The meaning of every other number; empty: the registered default.

    constexpr bool isEmpty() const { return list.empty(); }
    constexpr bool contains(qint64 number) const {
        return std::ranges::find(list, number, &Choice::number) != list.end();
    }
    /// Null: the number is not allowed.
    constexpr const Choice* find(qint64 number) const {
        const auto found = std::ranges::find(list, number, &Choice::number);
        return found == list.end() ? nullptr : &*found;
    }
    const Choice* find(QAnyStringView word) const {
        const auto found =
            std::ranges::find_if(list, [=](const Choice& choice) { return choice.word == word; });
        return found == list.end() ? nullptr : &*found;
    }
};

/// The allowed values of a type, for types that have a list.
template <class Value>
inline constexpr Choices kChoices{};

/// The words, numbered from 0.
template <class... Word>
constexpr std::array<Choice, sizeof...(Word)> numbered(Word... words) {
    qint64 number = 0;
    return {Choice(number++, words)...};
}

/// 0, which has no word, and the words, numbered from 2.
template <class... Word>
constexpr std::array<Choice, 1 + sizeof...(Word)> numberedBehindNone(Word... words) {
    qint64 number = 2;
    return {Choice(0, ""), Choice(number++, words)...};
}

inline constexpr auto kStyles = numbered("compatible", "fast", "custom");
// Every other number is converted like this style.
template <>
inline constexpr Choices kChoices<ConversionStyle>{kStyles, static_cast<qint64>(ConversionStyle::Fast)};

inline constexpr auto kMethods = numbered("aac", "aac51", "ac3", "ac351", "copy");
template <>
inline constexpr Choices kChoices<ConversionMethod>{kMethods, static_cast<qint64>(ConversionMethod::Copy)};

inline constexpr auto kExtensions = numbered("mp4", "m4v");
template <>
inline constexpr Choices kChoices<OutputExtension>{kExtensions, static_cast<qint64>(OutputExtension::M4v)};

inline constexpr auto kRemovals = numbered("trash", "delete");
template <>
inline constexpr Choices kChoices<SourceRemoval>{kRemovals, static_cast<qint64>(SourceRemoval::Delete)};

inline constexpr auto kCageModes = numbered("off", "on", "strict");
template <>
inline constexpr Choices kChoices<CageMode>{kCageModes, {}};

// Bit rates end in "k"; the others are quality levels.
inline constexpr auto kAacRates = numbered("96k", "128k", "160k", "192k", "9", "7", "5", "4");
template <>
inline constexpr Choices kChoices<AacRate>{kAacRates, {}};

inline constexpr auto kAacSurroundRates = numbered("224k", "256k", "384k", "448k", "9", "7", "5", "4");
template <>
inline constexpr Choices kChoices<AacSurroundRate>{kAacSurroundRates, {}};

inline constexpr auto kAc3Rates = numbered("160k", "192k", "224k", "256k");
template <>
inline constexpr Choices kChoices<Ac3Rate>{kAc3Rates, {}};

inline constexpr auto kAc3SurroundRates = numbered("384k", "448k", "512k", "576k");
template <>
inline constexpr Choices kChoices<Ac3SurroundRate>{kAc3SurroundRates, {}};

inline constexpr auto kLanguages = numberedBehindNone("eng", "ger", "fre", "spa", "chi", "jpn", "rus");
template <>
inline constexpr Choices kChoices<AudioLanguage>{kLanguages, {}};

inline constexpr auto kEncodings = numberedBehindNone(
    "UTF-8", "UTF-16", "CP874", "CP936", "CP1250", "CP1251", "CP1252", "CP1253", "CP1254", "CP1255", "CP1256",
    "CP1257", "CP1258", "LATIN1", "LATIN2", "LATIN3", "LATIN4", "LATIN5", "LATIN6", "LATIN7", "LATIN8",
    "ISO-8859-1", "ISO-8859-2", "ISO-8859-3", "ISO-8859-4", "ISO-8859-5", "ISO-8859-6", "ISO-8859-7",
    "ISO-8859-8", "ISO-8859-9", "ISO-8859-10", "ISO-8859-11", "ISO-8859-12", "ISO-8859-13", "ISO-8859-14",
    "ISO-8859-15", "ISO-8859-16");
template <>
inline constexpr Choices kChoices<SubtitleEncoding>{kEncodings, {}};

}  // namespace settings
