#pragma once

#include <QWidget>

/// Sets fonts, colours and margins of the labels below `root` according to their property "role": "heading"
/// or "help". A help label named like a control plus "Help" becomes that control's accessible description.
/// Call it again after the palette, the font or the direction changed. Main thread only.
void styleLabels(QWidget& root);
