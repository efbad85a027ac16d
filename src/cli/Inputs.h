#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// The files behind the paths that the user gave.
struct Inputs {
    struct Refusal {
        QString file;
        QString reason;
    };

    QStringList movies;  ///< Absolute paths, in the order given.
    QStringList subtitles;
    std::vector<Refusal> refusals;  ///< Paths behind which there is no movie, and why.
};

/// Looks at each path: folders are searched, what cannot be a movie is refused with a reason.
Inputs findInputs(const QStringList& paths);

/// Why a file cannot be read as a movie; empty: it can, as far as is seen without reading it. A link that
/// leads nowhere is left to the probe, which has a message for it.
QString whyNotReadable(const QString& path);

QString absolutePath(const QString& path);
