#pragma once

#include "convert/JobState.h"

#include <QFontMetrics>
#include <QRect>

#include <array>
#include <optional>

/// The layout of a job's row, and its buttons. No painting here. Main thread only.
namespace jobrow {

enum class Button { PauseContinue, Remove, Reveal };
inline constexpr std::array kButtons = {Button::PauseContinue, Button::Remove, Button::Reveal};

/// 72 device-independent pixels, more if the font needs it.
int height(const QFontMetrics& metrics);

struct Layout {
    QRect icon;
    QRect name;
    QRect status;
    QRect note;                                  ///< The third line.
    QRect bar;                                   ///< In its place for a job that is under way.
    std::array<QRect, kButtons.size()> buttons;  ///< In the order of kButtons.

    std::optional<Button> buttonAt(QPoint position) const;
    QRect rectOf(Button button) const { return buttons[static_cast<size_t>(button)]; }
};

/// The text never covers the place of the buttons, even while they are hidden, so that nothing moves on
/// hover.
Layout layout(const QRect& row, const QFontMetrics& nameMetrics, const QFontMetrics& statusMetrics,
              Qt::LayoutDirection direction);

/// Whether the button can be used for a job in this state.
bool isEnabled(Button button, JobState state);

}  // namespace jobrow
