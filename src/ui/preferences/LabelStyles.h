#pragma once

#include <QWidget>

/// Gives the labels below `root` the fonts, colours and distances of their property "role": "heading" or
/// "help". A help label named like a control plus "Help" becomes that control's accessible description. Again
/// after the palette, the font or the direction changed.
void styleLabels(QWidget& root);
