#pragma once

#include <QComboBox>

/// Adds the text encodings of subtitle files to `box`, each with its position in the tool's list as data. The
/// functions of this header: main thread only.
void addSubtitleEncodings(QComboBox& box);

/// Fills `box` with the possible methods for a kind of audio, each method as data. Stereo is not converted to
/// 5.1, unless that is stored. The box has the properties "settingKey" and "methods".
void addAudioMethods(QComboBox& box);
