#pragma once

class Desktop;

/// Follows the desktop's wish for dark windows where the platform's own palette does not: under a desktop
/// without integration of its own, windows would stay light. `desktop` outlives the application's event loop.
void followDesktopAppearance(Desktop& desktop);

/// Has the frames of check boxes and radio buttons drawn so that they are seen in dark windows, too.
void useVisibleIndicators();

/// Puts the application into dark or light colours, keeping the accent colour.
void useDarkPalette(bool dark);
