#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

/// A message of the probe about a movie. Two kinds of verdicts reject a movie; all others are warnings. They
/// are created without user interaction and shown by deliver().
struct Verdict {
    enum class Form {
        DontWarnAgain,  ///< The user can suppress it for this version, by `key`.
        Plain           ///< With the application's name as title.
    };
    Form form = Form::DontWarnAgain;
    QString key;  ///< Empty for a plain message.
    QString title;
    QString message;
    QString button;
    bool straightOver = false;  ///< Delivered to the main thread at once; all others 0.1 s later.
    /// For the E-AC3 warning: whether the stream is surround. Whether it is shown depends on the settings at
    /// the time of delivery.
    std::optional<bool> passThroughOfSurround;

    /// Whether the verdict is to be shown according to the current settings.
    bool isDue() const;

    bool operator==(const Verdict&) const = default;
};

namespace verdicts {

bool isRejectedVideoCodec(const QString& codec);

Verdict alias(const QString& fileName);
Verdict spawnFailed(const QString& reason, const QString& information);
Verdict toolProblem(const QString& problem);
Verdict invalidCodec(const QString& fileName, const QString& codec);
/// The probe was ended after `minutes`.
Verdict tooSlow(const QString& fileName, int minutes);
Verdict notAMovie(const QString& fileName);

/// The warnings about the chosen video stream: HEVC or another codec, 10 bits.
std::vector<Verdict> onVideo(const QString& fileName, const QString& codec, QStringView streamLine);
Verdict heaac(const QString& fileName);
Verdict eac3(const QString& fileName, bool surround);
/// The warnings about size and reference frames; `resolution` such as "1920x1080".
std::vector<Verdict> onResolution(const QString& fileName, QStringView resolution, int referenceFrames);

/// The verdicts in display order: those that are delivered at once come first.
std::vector<Verdict> inOrderOfShowing(std::vector<Verdict> verdicts);

/// Shows one verdict if it is due. Main thread only.
void show(const Verdict& verdict);
/// Schedules all verdicts for display on the main thread. Any thread; does not block.
void deliver(const std::vector<Verdict>& verdicts);

}  // namespace verdicts
