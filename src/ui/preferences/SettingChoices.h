#pragma once

#include <QComboBox>

/// Puts the text encodings of subtitle files into `box`, each with its position in the tool's list as data.
void addSubtitleEncodings(QComboBox& box);

/// Fills `box` anew with what a kind of audio can become, each with its method as data. Stereo is not blown
/// up to 5.1, unless that is what is stored. The box has the properties "settingKey" and "methods".
void addAudioMethods(QComboBox& box);
