#pragma once

class QWidget;

/// How things move.
namespace motion {

/// Of a change of `widget`, in milliseconds; 0 where the desktop or the style asks for no motion.
int duration(const QWidget& widget);

}  // namespace motion
