#include "convert/plan/StreamText.h"

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
constexpr Name kLanguages[] = {named("ara", QT_TRANSLATE_NOOP("Ravelin", "Arabic")),
                               named("bul", QT_TRANSLATE_NOOP("Ravelin", "Bulgarian")),
                               named("chi", QT_TRANSLATE_NOOP("Ravelin", "Chinese")),
                               named("cze", QT_TRANSLATE_NOOP("Ravelin", "Czech")),
                               named("dan", QT_TRANSLATE_NOOP("Ravelin", "Danish")),
                               named("dut", QT_TRANSLATE_NOOP("Ravelin", "Dutch")),
                               named("eng", QT_TRANSLATE_NOOP("Ravelin", "English")),
                               named("est", QT_TRANSLATE_NOOP("Ravelin", "Estonian")),
                               named("fin", QT_TRANSLATE_NOOP("Ravelin", "Finnish")),
                               named("fre", QT_TRANSLATE_NOOP("Ravelin", "French")),
                               named("ger", QT_TRANSLATE_NOOP("Ravelin", "German")),
                               named("gre", QT_TRANSLATE_NOOP("Ravelin", "Greek")),
                               named("heb", QT_TRANSLATE_NOOP("Ravelin", "Hebrew")),
                               named("hin", QT_TRANSLATE_NOOP("Ravelin", "Hindi")),
                               named("hrv", QT_TRANSLATE_NOOP("Ravelin", "Croatian")),
                               named("hun", QT_TRANSLATE_NOOP("Ravelin", "Hungarian")),
                               named("ice", QT_TRANSLATE_NOOP("Ravelin", "Icelandic")),
                               named("ind", QT_TRANSLATE_NOOP("Ravelin", "Indonesian")),
                               named("ita", QT_TRANSLATE_NOOP("Ravelin", "Italian")),
                               named("jpn", QT_TRANSLATE_NOOP("Ravelin", "Japanese")),
                               named("kor", QT_TRANSLATE_NOOP("Ravelin", "Korean")),
                               named("lav", QT_TRANSLATE_NOOP("Ravelin", "Latvian")),
                               named("lit", QT_TRANSLATE_NOOP("Ravelin", "Lithuanian")),
                               named("may", QT_TRANSLATE_NOOP("Ravelin", "Malay")),
                               named("mul", QT_TRANSLATE_NOOP("Ravelin", "Several languages")),
                               named("nor", QT_TRANSLATE_NOOP("Ravelin", "Norwegian")),
                               named("per", QT_TRANSLATE_NOOP("Ravelin", "Persian")),
                               named("pol", QT_TRANSLATE_NOOP("Ravelin", "Polish")),
                               named("por", QT_TRANSLATE_NOOP("Ravelin", "Portuguese")),
                               named("rum", QT_TRANSLATE_NOOP("Ravelin", "Romanian")),
                               named("rus", QT_TRANSLATE_NOOP("Ravelin", "Russian")),
                               named("slo", QT_TRANSLATE_NOOP("Ravelin", "Slovak")),
                               named("slv", QT_TRANSLATE_NOOP("Ravelin", "Slovenian")),
                               named("spa", QT_TRANSLATE_NOOP("Ravelin", "Spanish")),
                               named("srp", QT_TRANSLATE_NOOP("Ravelin", "Serbian")),
                               named("swe", QT_TRANSLATE_NOOP("Ravelin", "Swedish")),
                               named("tam", QT_TRANSLATE_NOOP("Ravelin", "Tamil")),
                               named("tel", QT_TRANSLATE_NOOP("Ravelin", "Telugu")),
                               named("tha", QT_TRANSLATE_NOOP("Ravelin", "Thai")),
                               named("tur", QT_TRANSLATE_NOOP("Ravelin", "Turkish")),
                               named("ukr", QT_TRANSLATE_NOOP("Ravelin", "Ukrainian")),
                               named("vie", QT_TRANSLATE_NOOP("Ravelin", "Vietnamese")),
                               named("zxx", QT_TRANSLATE_NOOP("Ravelin", "No language"))};

constexpr Name kCodecs[] = {
    named("h264", "H.264"), named("hevc", "HEVC"), named("mpeg4", "MPEG-4"), named("mpeg2video", "MPEG-2"),
    named("mpeg1video", "MPEG-1"), named("av1", "AV1"), named("vp9", "VP9"), named("vc1", "VC-1"),
    named("theora", "Theora"), named("mjpeg", "JPEG"), named("png", "PNG"), named("aac", "AAC"),
    named("ac3", "AC3"), named("eac3", "E-AC3"), named("dts", "DTS"), named("truehd", "TrueHD"),
    named("mlp", "MLP"), named("mp1", "MP1"), named("mp2", "MP2"), named("mp3", "MP3"), named("flac", "FLAC"),
    named("alac", "ALAC"), named("vorbis", "Vorbis"), named("opus", "Opus"), named("wmav2", "WMA"),
    named("subrip", "SubRip"), named("srt", "SubRip"), named("ass", "ASS"), named("ssa", "SSA"),
    named("sami", "SAMI"), named("subviewer", "SubViewer"), named("microdvd", "MicroDVD"),
    named("webvtt", "WebVTT"), named("mov_text", QT_TRANSLATE_NOOP("Ravelin", "MP4 text")),
    named("hdmv_pgs_subtitle", "PGS"), named("dvd_subtitle", "VobSub"), named("dvb_subtitle", "DVB"),
    named("dvb_teletext", "Teletext"), named("xsub", "XSUB"),
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
    if (stream.kind == StreamKind::Subtitle && stream.isForced()) return Texts::tr("forced");
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
