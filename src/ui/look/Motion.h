#pragma once

class QWidget;

/// Animations. Main thread only.
namespace motion {

/// Duration of an animation of `widget`, in milliseconds; 0 if the desktop or the style disables animations.
int duration(const QWidget& widget);

}  // namespace motion
