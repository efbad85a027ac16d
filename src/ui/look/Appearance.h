#pragma once

class Desktop;

/// Follows the desktop's setting for dark windows if the platform theme does not, which is the case under
/// desktops without Qt integration. `desktop` must outlive the application's event loop. The functions of
/// this header: main thread only.
void followDesktopAppearance(Desktop& desktop);

/// Draws the frames of check boxes and radio buttons with enough contrast for dark windows.
void useVisibleIndicators();

/// Sets dark or light colours for the application and keeps the accent colour.
void useDarkPalette(bool dark);
