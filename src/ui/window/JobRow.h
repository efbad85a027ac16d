#pragma once

#include "convert/JobState.h"

#include <QFontMetrics>
#include <QRect>

#include <array>
#include <optional>

/// Where the parts of a job's row are, and what its buttons are. No painting here.
namespace jobrow {

enum class Button { PauseContinue, Remove, Reveal };
inline constexpr std::array kButtons = {Button::PauseContinue, Button::Remove, Button::Reveal};

/// 72 device-independent pixels, more where the font needs it.
int height(const QFontMetrics& metrics);

struct Layout {
    QRect icon;
    QRect name;
    QRect status;
    QRect bar;
    std::array<QRect, kButtons.size()> buttons;  ///< In the order of kButtons.

    std::optional<Button> buttonAt(QPoint position) const;
    QRect rectOf(Button button) const { return buttons[static_cast<size_t>(button)]; }
};

/// Text keeps free of the buttons' place whether they are shown or not, so that nothing moves on hover.
Layout layout(const QRect& row, const QFontMetrics& nameMetrics, const QFontMetrics& statusMetrics,
              Qt::LayoutDirection direction);

/// What can be done with a job in this state.
bool isEnabled(Button button, JobState state);

}  // namespace jobrow
