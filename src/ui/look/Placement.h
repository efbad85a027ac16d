#pragma once

class QWidget;

/// Centres `window` over `over`, or on the screen if that is null, within the limits of the screen. Main
/// thread only.
void centreOver(QWidget& window, const QWidget* over);
