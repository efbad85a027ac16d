#include "probe/Verdicts.h"

#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/processes/Dispatch.h"
#include "support/store/Defaults.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

constexpr float kDelaySeconds = 0.1F;

Verdict plain(const QString& message, const QString& button) {
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
    verdict.title = Texts::tr("Warning");
    verdict.message = message;
    verdict.button = Texts::tr("OK");
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
    // Invalid numbers that are mapped to a style or a method are no choice of the user to copy the audio.
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
        Texts::tr(
            "The file '%1' is an alias. We can't open the target of the alias because of limitations in Apple's 'sandbox'. Please complaint to Apple if you want Aliases to work in sandboxed apps.")
            .arg(fileName));
}

Verdict spawnFailed(const QString& reason, const QString& information) {
    return plain(
        Texts::tr(
            "A basic system capability failed (posix_spawn). Please reboot your system and try again. Info: %1 | %2")
            .arg(reason, information),
        Texts::tr("Exit"));
}

Verdict toolProblem(const QString& problem) {
    return plain(problem, Texts::tr("OK"));
}

Verdict tooSlow(const QString& fileName, int minutes) {
    return plain(
        Texts::tr(
            "The file '%1' could not be examined within %2 minutes. Its disk or network volume may have problems.")
            .arg(fileName)
            .arg(minutes),
        Texts::tr("OK"));
}

Verdict invalidCodec(const QString& fileName, const QString& codec) {
    return plain(
        Texts::tr("Warning: the file '%1' contains an invalid video codec (%2) and can't be converted by %3.")
            .arg(fileName, codec, ApplicationInfo::name()),
        Texts::tr("OK"));
}

Verdict notAMovie(const QString& fileName) {
    return plain(
        Texts::tr(
            "Warning: the file '%1' doesn't seem to be a valid MKV and can't be converted by %2. If you are sure the file is valid please contact us regarding this issue.")
            .arg(fileName, ApplicationInfo::name()),
        Texts::tr("OK"));
}

std::vector<Verdict> onVideo(const QString& fileName, const QString& codec, QStringView streamLine) {
    std::vector<Verdict> result;
    if (codec == u"hevc") {
        result.push_back(warningStraightOver(
            "hevcvideowarning",
            Texts::tr(
                "The file '%1' contains a H265/HEVC video track. Conversion should succeed but the result may not be playable everywhere. QuickTime / iOS / AppleTV should be able to play the result starting with macOS 10.13 / iOS 11 / tvOS 11.")
                .arg(fileName)));
    } else if (codec != u"h264" && codec != u"mpeg4") {
        result.push_back(warningStraightOver(
            "wrongvideowarning",
            Texts::tr(
                "The file '%1' doesn't contain a H264/MPEG4 video track (videocodec: %2) so the result may not be playable.")
                .arg(fileName, codec)));
    }
    if (streamLine.contains(u"High 10")) {
        result.push_back(warningStraightOver(
            "10bitvideowarning",
            Texts::tr(
                "The file '%1' contains a 10-bit video track so the result will only be playable with VLC/Mplayer, but not with most other devices or players (including the 'Playstation 3', the 'Apple TV', iOS devices and QuickTime).")
                .arg(fileName)));
    }
    return result;
}

Verdict heaac(const QString& fileName) {
    return warning(
        "warningheaac",
        Texts::tr(
            "The file '%1' will probably not play back fine on the 'Playstation 3' and some other devices that don't support HE-AAC. It should play fine on QuickTime/iOS/ATV. If the file doesn't play with sound, enable HE-AAC to AAC conversion in the preferences.")
            .arg(fileName));
}

Verdict eac3(const QString& fileName, bool surround) {
    Verdict verdict = warning(
        "warningeac3",
        Texts::tr(
            "The file '%1' contains a 'E-AC3'(Dolby Digital PLUS) sound track, which is similar to AC3 but not 100% the same. You've chosen to 'passthrough' AC3 audio tracks, so if you select this audio track, it will be embedded as-is into the resulting MP4. This should be fine, as most AC3 compatible-equipment and players also support E-AC3. However, if you notice that the resulting MP4 only plays without sound, consult the ReadMe to enable conversion of E-AC3.")
            .arg(fileName));
    verdict.passThroughOfSurround = surround;
    return verdict;
}

std::vector<Verdict> onResolution(const QString& fileName, QStringView resolution, int referenceFrames) {
    constexpr int kWidest = 1920;
    constexpr double kLargestPictureBuffer = 8388608;  // pixels of reference frames that the player can store
    std::vector<Verdict> result;
    const int width = text::integerValue(resolution);
    const int height = text::integerValue(text::piece(resolution, u"x", 1).value_or(QStringView()));
    if (width > kWidest) {
        result.push_back(warning(
            "warningtoohighres",
            Texts::tr(
                "The file '%1' will probably not play back fine on some devices/players as it has a too large resolution. You can try converting the produced MP4 file using 'QuickTime Player' to a 1080p M4V file to increase compatibility.")
                .arg(fileName)));
    }
    const double limit =
        std::floor(kLargestPictureBuffer / (static_cast<double>(width) * static_cast<double>(height)));
    if (referenceFrames > limit) {
        result.push_back(warning(
            "warningtoomanyrefframes",
            Texts::tr(
                "The file '%1' will probably not play back fine on the 'Playstation 3' or other devices as it contains more 'reference frames' than the PS3 supports. You can try converting the produced MP4 file using 'QuickTime Player' to a 720p M4V file to view this video on the PS3.")
                .arg(fileName)));
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
                                    Texts::tr("Don't warn again"));
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
