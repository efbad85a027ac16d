#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One audio stream of a movie: its text, by which the user chooses it and from which the conversion reads it
/// back, and its sample rate. The text's layout is a contract: "#%@: %@ (%@)%@" of stream number, language,
/// codec tag and " [5.1]" for surround, such as "#1: eng (ac3) [5.1]".
struct AudioEntry {
    QString text;
    int sampleRate = 0;  ///< Hz; 0: the report did not say.

    static AudioEntry make(int stream, const QString& language, const QString& codec, bool surround,
                           int sampleRate);

    /// The stream's number in the input file.
    int stream() const;
    QString language() const;
    /// The codec tag; empty where the text has no third word.
    QString codec() const;
    bool isSurround() const;
    /// Language, codec and surround mark as the status text shows them, with the blank in front.
    QString description() const;
    /// The third word as it stands: the codec tag in parentheses.
    QString codecWord() const;

    bool operator==(const AudioEntry&) const = default;
};

QStringList texts(const QList<AudioEntry>& entries);
