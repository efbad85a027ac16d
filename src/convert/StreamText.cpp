#include "convert/StreamText.h"

#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace {

struct Name {
    QLatin1StringView code;
    const char* name;
};

constexpr Name named(const char* code, const char* name) {
    return {QLatin1StringView(code), name};
}

/// Null: the code is not listed.
const char* nameOf(std::span<const Name> names, const QString& code) {
    const auto found = std::ranges::find_if(names, [&](const Name& each) { return code == each.code; });
    return found == names.end() ? nullptr : found->name;
}

// The names that can be translated; Qt knows the other languages, in English.
constexpr std::array kLanguages = {named("ara", RAVELIN_TEXT("Arabic")),
                                   named("bul", RAVELIN_TEXT("Bulgarian")),
                                   named("chi", RAVELIN_TEXT("Chinese")),
                                   named("cze", RAVELIN_TEXT("Czech")),
                                   named("dan", RAVELIN_TEXT("Danish")),
                                   named("dut", RAVELIN_TEXT("Dutch")),
                                   named("eng", RAVELIN_TEXT("English")),
                                   named("est", RAVELIN_TEXT("Estonian")),
                                   named("fin", RAVELIN_TEXT("Finnish")),
                                   named("fre", RAVELIN_TEXT("French")),
                                   named("ger", RAVELIN_TEXT("German")),
                                   named("gre", RAVELIN_TEXT("Greek")),
                                   named("heb", RAVELIN_TEXT("Hebrew")),
                                   named("hin", RAVELIN_TEXT("Hindi")),
                                   named("hrv", RAVELIN_TEXT("Croatian")),
                                   named("hun", RAVELIN_TEXT("Hungarian")),
                                   named("ice", RAVELIN_TEXT("Icelandic")),
                                   named("ind", RAVELIN_TEXT("Indonesian")),
                                   named("ita", RAVELIN_TEXT("Italian")),
                                   named("jpn", RAVELIN_TEXT("Japanese")),
                                   named("kor", RAVELIN_TEXT("Korean")),
                                   named("lav", RAVELIN_TEXT("Latvian")),
                                   named("lit", RAVELIN_TEXT("Lithuanian")),
                                   named("may", RAVELIN_TEXT("Malay")),
                                   named("mul", RAVELIN_TEXT("Several languages")),
                                   named("nor", RAVELIN_TEXT("Norwegian")),
                                   named("per", RAVELIN_TEXT("Persian")),
                                   named("pol", RAVELIN_TEXT("Polish")),
                                   named("por", RAVELIN_TEXT("Portuguese")),
                                   named("rum", RAVELIN_TEXT("Romanian")),
                                   named("rus", RAVELIN_TEXT("Russian")),
                                   named("slo", RAVELIN_TEXT("Slovak")),
                                   named("slv", RAVELIN_TEXT("Slovenian")),
                                   named("spa", RAVELIN_TEXT("Spanish")),
                                   named("srp", RAVELIN_TEXT("Serbian")),
                                   named("swe", RAVELIN_TEXT("Swedish")),
                                   named("tam", RAVELIN_TEXT("Tamil")),
                                   named("tel", RAVELIN_TEXT("Telugu")),
                                   named("tha", RAVELIN_TEXT("Thai")),
                                   named("tur", RAVELIN_TEXT("Turkish")),
                                   named("ukr", RAVELIN_TEXT("Ukrainian")),
                                   named("vie", RAVELIN_TEXT("Vietnamese")),
                                   named("zxx", RAVELIN_TEXT("No language"))};

constexpr std::array kCodecs = {
    named("h264", "H.264"), named("hevc", "HEVC"), named("mpeg4", "MPEG-4"), named("mpeg2video", "MPEG-2"),
    named("mpeg1video", "MPEG-1"), named("av1", "AV1"), named("vp9", "VP9"), named("vc1", "VC-1"),
    named("theora", "Theora"), named("mjpeg", "JPEG"), named("png", "PNG"), named("aac", "AAC"),
    named("ac3", "AC3"), named("eac3", "E-AC3"), named("dts", "DTS"), named("truehd", "TrueHD"),
    named("mlp", "MLP"), named("mp1", "MP1"), named("mp2", "MP2"), named("mp3", "MP3"), named("flac", "FLAC"),
    named("alac", "ALAC"), named("vorbis", "Vorbis"), named("opus", "Opus"), named("wmav2", "WMA"),
    named("subrip", "SubRip"), named("srt", "SubRip"), named("ass", "ASS"), named("ssa", "SSA"),
    named("sami", "SAMI"), named("subviewer", "SubViewer"), named("microdvd", "MicroDVD"),
    named("webvtt", "WebVTT"), named("mov_text", RAVELIN_TEXT("MP4 text")), named("hdmv_pgs_subtitle", "PGS"),
    named("dvd_subtitle", "VobSub"), named("dvb_subtitle", "DVB"), named("dvb_teletext", "Teletext"),
    named("xsub", "XSUB"),
    // What the record calls them.
    named("he-aac", "HE-AAC"), named("aac-main", "AAC")};

QString pictureFormat(const MovieStream& stream) {
    if (stream.width <= 0 || stream.height <= 0) return {};
    struct Size {
        int width, height;
    };
    // A movie without black bars is less high, or less wide, than its size says.
    static constexpr std::array<Size, 6> kSizes = {
        {{720, 576}, {1280, 720}, {1920, 1080}, {2560, 1440}, {3840, 2160}, {7680, 4320}}};
    constexpr double kTolerance = 0.07;
    constexpr int kNtscHeight = 480;
    const auto size = std::ranges::find_if(kSizes, [&](const Size& each) {
        return stream.width <= each.width * (1 + kTolerance) &&
               stream.height <= each.height * (1 + kTolerance);
    });
    const bool isNamed =
        size != kSizes.end() && stream.width >= stream.height &&
        (stream.width >= size->width * (1 - kTolerance) || stream.height >= size->height * (1 - kTolerance));
    if (isNamed) {
        const bool isNtsc = size == kSizes.begin() && stream.height <= kNtscHeight;
        return QString::number(isNtsc ? kNtscHeight : size->height) + (stream.isInterlaced ? u'i' : u'p');
    }
    return QStringLiteral("%1x%2").arg(stream.width).arg(stream.height);
}

QString soundFormat(const MovieStream& stream) {
    if (stream.channels == 1) return Texts::tr("mono");
    if (stream.channels == 2) return Texts::tr("stereo");
    const QString layout = stream.channelLayout.section(u'(', 0, 0);
    if (!layout.isEmpty() && layout.front().isDigit() && layout.contains(u'.')) return layout;
    return stream.channels > 0 ? Texts::tr("%n channels", nullptr, stream.channels) : QString();
}

}  // namespace

namespace streamtext {

QString languageName(const QString& code) {
    QString language = code.section(u'-', 0, 0).trimmed().toLower();
    if (language.isEmpty() || language == u"und" || language == u"unk") return {};
    if (const char* name = nameOf(kLanguages, language)) return text::localized(name);
    const QLocale::Language known = QLocale::codeToLanguage(language);
    if (known == QLocale::AnyLanguage || known == QLocale::C) return code.trimmed();
    // Codes of the other kinds for a language of the list.
    const QString bibliographic = QLocale::languageToCode(known, QLocale::ISO639Part2B);
    if (const char* name = nameOf(kLanguages, bibliographic)) return text::localized(name);
    return QLocale::languageToString(known);
}

QString codecName(const QString& codec) {
    if (const char* name = nameOf(kCodecs, codec)) return text::localized(name);
    return codec.startsWith(u"pcm_") ? QStringLiteral("PCM") : codec;
}

QString format(const MovieStream& stream) {
    if (stream.kind == StreamKind::Video) return pictureFormat(stream);
    return stream.kind == StreamKind::Audio ? soundFormat(stream) : QString();
}

QString target(ConversionMethod method) {
    switch (method) {
        case ConversionMethod::AacStereo:
            return Texts::tr("AAC stereo");
        case ConversionMethod::AacSurround:
            return Texts::tr("AAC 5.1");
        case ConversionMethod::Ac3Stereo:
            return Texts::tr("AC3 stereo");
        case ConversionMethod::Ac3Surround:
            return Texts::tr("AC3 5.1");
        case ConversionMethod::Copy:
            break;
    }
    return {};
}

QString target(const PlannedAudio& audio) {
    QStringList parts(target(audio.method));
    if (parts.first().isEmpty()) return {};
    parts += audio.rate.endsWith(u'k') ? Texts::tr("%1 kb/s").arg(audio.rate.chopped(1))
                                       : Texts::tr("variable rate, level %1").arg(audio.rate);
    constexpr int kHertz = 1000;
    if (audio.sampleRate > 0) parts += Texts::tr("%1 kHz").arg(QString::number(audio.sampleRate / kHertz));
    constexpr float kPercent = 100;
    if (audio.volume)
        parts += Texts::tr("volume %1 %").arg(QString::number(std::lround(*audio.volume * kPercent)));
    return parts.join(QStringLiteral(", "));
}

QString subtitleTarget() {
    return Texts::tr("MP4 text");
}

}  // namespace streamtext
