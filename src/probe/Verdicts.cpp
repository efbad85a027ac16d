#include "probe/Verdicts.h"

#include "settings/Settings.h"
#include "support/Alert.h"
#include "support/AlertQueue.h"
#include "support/ApplicationInfo.h"
#include "support/Dispatch.h"
#include "support/DontWarnAgain.h"
#include "support/Format.h"
#include "support/Text.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

constexpr float kDelaySeconds = 0.1F;

Verdict plain(const QString& message, const char* button) {
    Verdict verdict;
    verdict.form = Verdict::Form::Plain;
    verdict.title = ApplicationInfo::name();
    verdict.message = message;
    verdict.button = button;
    return verdict;
}

Verdict warning(const char* key, const QString& message) {
    Verdict verdict;
    verdict.key = key;
    verdict.title = "Warning";
    verdict.message = message;
    verdict.button = "OK";
    return verdict;
}

Verdict warningStraightOver(const char* key, const QString& message) {
    Verdict verdict = warning(key, message);
    verdict.straightOver = true;
    return verdict;
}

}  // namespace

bool Verdict::isDue() const {
    if (!passThroughOfSurround) return true;
    // Numbers that merely mean a style or a method are nobody's choice to pass audio through.
    const auto style = settings::ConversionPreset.chosen();
    if (style == ConversionStyle::Fast) return true;
    if (style != ConversionStyle::Custom) return false;
    const auto& handling =
        *passThroughOfSurround ? settings::CustomAC351AudioHandling : settings::CustomAC3AudioHandling;
    return handling.chosen() == ConversionMethod::Copy;
}

namespace verdicts {

bool isRejectedVideoCodec(const QString& codec) {
    static const QStringList rejected = {"dvvideo", "prores", "wmv3", "wmv2",      "wmv1", "rv40",
                                         "vp6f",    "dnxhd",  "vp8",  "msmpeg4v3", "aic"};
    return rejected.contains(codec);
}

Verdict alias(const QString& fileName) {
    return warning(
        "warningalias",
        makeString(
            "The file '%@' is an alias. We can't open the target of the alias because of limitations in "
            "Apple's 'sandbox'. Please complaint to Apple if you want Aliases to work in sandboxed apps.",
            fileName));
}

Verdict spawnFailed(const QString& reason, const QString& information) {
    return plain(
        makeString("A basic system capability failed (posix_spawn). Please reboot your system and try again. "
                   "Info: %@ | %@",
                   reason, information),
        "Exit");
}

Verdict toolProblem(const QString& problem) {
    return plain(problem, "OK");
}

Verdict invalidCodec(const QString& fileName, const QString& codec) {
    return plain(
        makeString(
            "Warning: the file '%@' contains an invalid video codec (%@) and can't be converted by %@.",
            fileName, codec, ApplicationInfo::name()),
        "OK");
}

Verdict notAMovie(const QString& fileName) {
    return plain(
        makeString(
            "Warning: the file '%@' doesn't seem to be a valid MKV and can't be converted by %@. If you are "
            "sure the file is valid please contact us regarding this issue.",
            fileName, ApplicationInfo::name()),
        "OK");
}

std::vector<Verdict> onVideo(const QString& fileName, const QString& codec, QStringView streamLine) {
    std::vector<Verdict> result;
    if (codec == u"hevc") {
        result.push_back(warningStraightOver(
            "hevcvideowarning", makeString("The file '%@' contains a H265/HEVC video track. Conversion "
                                           "should succeed but the result may not be "
                                           "playable everywhere. QuickTime / iOS / AppleTV should be able to "
                                           "play the result starting with macOS "
                                           "10.13 / iOS 11 / tvOS 11.",
                                           fileName)));
    } else if (codec != u"h264" && codec != u"mpeg4") {
        result.push_back(warningStraightOver(
            "wrongvideowarning",
            makeString("The file '%@' doesn't contain a H264/MPEG4 video track (videocodec: "
                       "%@) so the result may not be playable.",
                       fileName, codec)));
    }
    if (streamLine.contains(u"High 10")) {
        result.push_back(warningStraightOver("10bitvideowarning",
                                             makeString("The file '%@' contains a 10-bit video track so the "
                                                        "result will only be playable with VLC/Mplayer, but "
                                                        "not with most other devices or players (including "
                                                        "the 'Playstation 3', the 'Apple TV', iOS devices "
                                                        "and QuickTime).",
                                                        fileName)));
    }
    return result;
}

Verdict heaac(const QString& fileName) {
    return warning(
        "warningheaac",
        makeString(
            "The file '%@' will probably not play back fine on the 'Playstation 3' and some other devices "
            "that don't support HE-AAC. It should play fine on QuickTime/iOS/ATV. If the file doesn't play "
            "with sound, enable HE-AAC to AAC conversion in the preferences.",
            fileName));
}

Verdict eac3(const QString& fileName, bool surround) {
    Verdict verdict =
        warning("warningeac3", makeString("The file '%@' contains a 'E-AC3'(Dolby Digital PLUS) sound track, "
                                          "which is similar to AC3 but not 100%% "
                                          "the same. You've chosen to 'passthrough' AC3 audio tracks, so if "
                                          "you select this audio track, it will be "
                                          "embedded as-is into the resulting MP4. This should be fine, as "
                                          "most AC3 compatible-equipment and players "
                                          "also support E-AC3. However, if you notice that the resulting MP4 "
                                          "only plays without sound, consult the "
                                          "ReadMe to enable conversion of E-AC3.",
                                          fileName));
    verdict.passThroughOfSurround = surround;
    return verdict;
}

std::vector<Verdict> onResolution(const QString& fileName, QStringView resolution, int referenceFrames) {
    constexpr int kWidest = 1920;
    constexpr double kLargestPictureBuffer = 8388608;  // pixels of reference frames that the player holds
    std::vector<Verdict> result;
    const int width = text::integerValue(resolution);
    const int height = text::integerValue(text::piece(resolution, u"x", 1).value_or(QStringView()));
    if (width > kWidest) {
        result.push_back(
            warning("warningtoohighres", makeString("The file '%@' will probably not play back fine on some "
                                                    "devices/players as it has a too large "
                                                    "resolution. You can try converting the produced MP4 "
                                                    "file using 'QuickTime Player' to a 1080p M4V "
                                                    "file to increase compatibility.",
                                                    fileName)));
    }
    const double limit =
        std::floor(kLargestPictureBuffer / (static_cast<double>(width) * static_cast<double>(height)));
    if (referenceFrames > limit) {
        result.push_back(
            warning("warningtoomanyrefframes",
                    makeString("The file '%@' will probably not play back fine on the 'Playstation 3' or "
                               "other devices as it contains "
                               "more 'reference frames' than the PS3 supports. You can try converting the "
                               "produced MP4 file using "
                               "'QuickTime Player' to a 720p M4V file to view this video on the PS3.",
                               fileName)));
    }
    return result;
}

std::vector<Verdict> inOrderOfShowing(std::vector<Verdict> verdicts) {
    std::stable_partition(verdicts.begin(), verdicts.end(), [](const Verdict& v) { return v.straightOver; });
    return verdicts;
}

void show(const Verdict& verdict) {
    if (!verdict.isDue()) return;
    if (verdict.form == Verdict::Form::Plain) {
        alert(verdict.title, verdict.message, verdict.button);
    } else {
        alert_dontwarnagain_version(verdict.key, verdict.title, verdict.message, verdict.button,
                                    "Don't warn again");
    }
}

void deliver(const std::vector<Verdict>& verdicts) {
    for (const Verdict& verdict : verdicts) {
        const auto block = [verdict] { showInTurn([verdict] { show(verdict); }); };
        if (verdict.straightOver) {
            dispatch_async_main(block);
        } else {
            dispatch_after_main(block, kDelaySeconds);
        }
    }
}

}  // namespace verdicts
