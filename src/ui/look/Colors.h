#pragma once

#include <QColor>
#include <QPalette>

/// The few colours of the window beside the palette's own: each a mixture of these, so that they fit light
/// and dark ones.
namespace colors {

/// For what is read second; at least 4.5 : 1 against the background of usual palettes.
QColor secondaryText(const QPalette& palette);
QColor track(const QPalette& palette);
/// The bar of a job that does not move: paused or finished.
QColor restingBar(const QPalette& palette);
QColor hairline(const QPalette& palette);
QColor hoveredRow(const QPalette& palette);
QColor selectedRow(const QPalette& palette);
QColor hotButton(const QPalette& palette);
QColor pressedButton(const QPalette& palette);

}  // namespace colors
