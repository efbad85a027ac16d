#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One audio stream of a movie: its text, which is shown to the user and parsed again by the conversion, and
/// its sample rate. The format of the text is a contract: "#%@: %@ (%@)%@" of stream number, language, codec
/// tag and " [5.1]" for surround, such as "#1: eng (ac3) [5.1]". A value; any thread.
struct AudioEntry {
    QString text;
    int sampleRate = 0;  ///< Hz; 0: unknown.

    static AudioEntry make(int stream, const QString& language, const QString& codec, bool surround,
                           int sampleRate);

    /// The stream's number in the input file.
    int stream() const;
    QString language() const;
    /// The codec tag; empty if the text has no third word.
    QString codec() const;
    bool isSurround() const;
    /// Language, codec and surround mark as in the status text, with a leading blank.
    QString description() const;
    /// The third word of the text: the codec tag in parentheses.
    QString codecWord() const;

    bool operator==(const AudioEntry&) const = default;
};

QStringList texts(const QList<AudioEntry>& entries);
