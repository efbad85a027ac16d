#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

/// What the probe has to tell the user about a movie. Two verdicts stop a movie; all others are warnings that
/// let it through. Made without asking anyone; shown by deliver().
struct Verdict {
    enum class Form {
        DontWarnAgain,  ///< May be silenced for this version, under `key`.
        Plain           ///< Titled with the application's name.
    };
    Form form = Form::DontWarnAgain;
    QString key;  ///< Empty for a plain message.
    QString title;
    QString message;
    QString button;
    bool straightOver = false;  ///< Goes to the main thread at once; all others 0.1 s later.
    /// For the E-AC3 warning: whether the stream is surround. Whether to warn depends on the settings at the
    /// moment when the warning is due.
    std::optional<bool> passThroughOfSurround;

    /// Whether it is still to be shown, by the settings as they are now.
    bool isDue() const;

    bool operator==(const Verdict&) const = default;
};

namespace verdicts {

bool isRejectedVideoCodec(const QString& codec);

Verdict alias(const QString& fileName);
Verdict spawnFailed(const QString& reason, const QString& information);
Verdict toolProblem(const QString& problem);
Verdict invalidCodec(const QString& fileName, const QString& codec);
Verdict notAMovie(const QString& fileName);

/// The warnings on the chosen video stream: HEVC or another codec, 10 bits.
std::vector<Verdict> onVideo(const QString& fileName, const QString& codec, QStringView streamLine);
Verdict heaac(const QString& fileName);
Verdict eac3(const QString& fileName, bool surround);
/// The warnings on size and reference frames; `resolution` such as "1920x1080".
std::vector<Verdict> onResolution(const QString& fileName, QStringView resolution, int referenceFrames);

/// The verdicts in the order in which they are shown: those that go straight over come first.
std::vector<Verdict> inOrderOfShowing(std::vector<Verdict> verdicts);

/// Shows one verdict if it is due. Main thread.
void show(const Verdict& verdict);
/// Has all shown on the main thread, each at its time. From any thread; waits for nothing.
void deliver(const std::vector<Verdict>& verdicts);

}  // namespace verdicts
