#pragma once

#include <QByteArray>
#include <QObject>
#include <QSize>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

/// A frame of a movie as a small picture.
struct PosterRequest {
    QStringList paths;  ///< Of the movie, full paths; the first one that gives a frame is taken.
    std::optional<qint32> runtimeSeconds;
    QSize pixels;  ///< Of the picture, which is cropped to it.
};

/// Has the tool take posters, one at a time, in its cage and at the lowest priority. Nothing of a movie is
/// read here: the tool writes the pixels to a pipe, and only their number is checked. Files are reached in a
/// thread of its own, as a disk may not answer. Main thread only.
class PosterTaker : public QObject {
    Q_OBJECT

public:
    explicit PosterTaker(QObject* parent = nullptr);
    /// Cancels.
    ~PosterTaker() override;

    /// Call it only while isBusy() is false. taken() follows.
    void take(const PosterRequest& request);
    bool isBusy() const { return m_run != nullptr; }
    /// Ends the tool; no signal follows. Waits for its end, but not for a disk that does not answer.
    void cancel();

    /// The position of the frame.
    static double position(const PosterRequest& request);
    /// For one frame as RGB, from `position` (seconds) or up to one key frame before. Pictures about the
    /// movie, such as its cover, are not taken. Pure; any thread.
    static QStringList arguments(const QString& path, double position, QSize pixels);

Q_SIGNALS:
    /// Three bytes for each pixel, red first, row by row without padding; empty: there is no frame, for
    /// whatever reason.
    void taken(const QByteArray& rgb);

private:
    struct Run;
    std::shared_ptr<Run> m_run;  ///< Null: none is under way.
};
