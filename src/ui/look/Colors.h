#pragma once

#include <QColor>
#include <QPalette>

/// The colours of the window that are not in the palette: each is mixed from colours of the palette, or
/// chosen by its lightness, so that it fits light and dark palettes. Pure; any thread.
namespace colors {

/// What a text is about.
enum class Tone {
    Normal,
    Secondary,
    Good,     ///< All is well: green.
    Warning,  ///< Something is missing: amber.
    Problem,  ///< Something failed: red.
    Link      ///< Can be clicked; from the palette's accent colour.
};

/// For text on the palette's background colours; contrast of at least 4.5 : 1 with usual palettes.
QColor text(const QPalette& palette, Tone tone);

bool isDark(const QPalette& palette);

/// For secondary information; contrast of at least 4.5 : 1 with the background of usual palettes.
QColor secondaryText(const QPalette& palette);
QColor track(const QPalette& palette);
/// The progress bar of a paused or finished job.
QColor restingBar(const QPalette& palette);
QColor hairline(const QPalette& palette);
/// Where a picture will be.
QColor placeholder(const QPalette& palette);
QColor hoveredRow(const QPalette& palette);
QColor selectedRow(const QPalette& palette);
QColor hotButton(const QPalette& palette);
QColor pressedButton(const QPalette& palette);

}  // namespace colors
