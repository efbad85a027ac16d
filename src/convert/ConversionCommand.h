#pragma once

#include "convert/ConversionPlan.h"

#include <QString>
#include <QStringList>

/// Formats the tool's arguments for one conversion. Pure functions, any thread: nothing is started or read.
/// The order of the arguments is a contract. What is converted into what is decided in the plan.

/// The paths of one conversion, or words that stand for them.
struct ConversionFiles {
    QString source;
    QString subtitles;  ///< Used if the plan carries a subtitle file.
    QString progress;
    QString destination;
};

/// The arguments without the tool's own path. `needsFixup`: a copied AAC stream needs the "aac_adtstoasc"
/// filter.
QStringList toolArguments(const ConversionPlan& plan, const ConversionFiles& files, bool needsFixup);

/// The input of conversionArguments().
struct ConversionRequest {
    const MKVFileInfo& info;
    qsizetype audioTrackIndex = 0;  ///< Position in audioTrackInformation.
    bool needsFixup = false;
    QString progressFile;
    Remedies remedies = {};
};

/// Plans the conversion and formats the arguments.
QStringList conversionArguments(const ConversionRequest& request, const ConversionSettings& chosen);
