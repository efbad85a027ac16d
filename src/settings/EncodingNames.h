#pragma once

#include "settings/Values.h"

#include <QList>
#include <QString>

/// An encoding of subtitle files with a title for users who do not know its name.
struct EncodingName {
    SubtitleEncoding encoding{};
    QString title;  ///< Translated: "CP1252 – Western European".
};

/// The encodings that the user may choose, the automatic choice first. Any thread.
QList<EncodingName> subtitleEncodings();
