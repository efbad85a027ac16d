#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// The files that belong to the paths given by the user. Any thread.
struct Inputs {
    struct Refusal {
        QString file;
        QString reason;
    };

    QStringList movies;  ///< Absolute paths, in the given order.
    QStringList subtitles;
    std::vector<Refusal> refusals;  ///< Paths without a movie, with the reason.

    bool isEmpty() const { return movies.isEmpty() && refusals.empty(); }
    /// The error for inputs that are empty.
    static QString noMovie();
};

/// What earlier runs have put into the folders that are searched.
enum class Outputs {
    Taken,   ///< As movies.
    LeftOut  ///< Recognised by their attributes, or by the name of the movie that is beside them.
};

/// Resolves each path: folders are searched, files that cannot be movies are refused with a reason.
Inputs findInputs(const QStringList& paths, Outputs outputs = Outputs::Taken);

/// Why a file cannot be read as a movie; empty: it can, as far as can be checked without reading it. A broken
/// link is left to the probe, which has a message for it.
QString whyNotReadable(const QString& path);

/// Why a movie with `count` audio tracks is refused if the one at `position` was asked for.
QString noSuchAudioTrack(const QString& file, qsizetype count, qsizetype position);

QString absolutePath(const QString& path);
