#pragma once

class QWidget;

/// Moves `window` to the middle of `over`, or of the screen where that is null, as far as the screen allows.
void centreOver(QWidget& window, const QWidget* over);
