#pragma once

#include <QAccessible>
#include <QString>

class QWidget;

/// What Qt does not do by itself for screen readers. Main thread only.
namespace accessibility {

/// Gives a widget of our own a role; without one it is a mere container. To be called in its constructor,
/// before it has a name, which may be reported at once.
void setRole(QWidget& widget, QAccessible::Role role);

/// Has a screen reader say the text without the focus moving. `origin` is in the window that it is about.
void announce(QWidget& origin, const QString& text);

}  // namespace accessibility
