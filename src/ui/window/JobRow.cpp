#include "ui/window/JobRow.h"

#include <QStyle>

namespace jobrow {

namespace {

constexpr int kHeight = 72;
constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kSmallGap = 4;
constexpr int kIcon = 24;
constexpr int kButton = 28;
constexpr int kBar = 6;

int textHeight(const QFontMetrics& name, const QFontMetrics& status) {
    return name.height() + 2 * (kSmallGap / 2 + status.height());
}

}  // namespace

int height(const QFontMetrics& metrics) {
    return qMax(kHeight, textHeight(metrics, metrics) + 2 * kGap);
}

Layout layout(const QRect& row, const QFontMetrics& nameMetrics, const QFontMetrics& statusMetrics,
              Qt::LayoutDirection direction) {
    const int middle = row.center().y() + 1;
    const int buttonsWidth =
        static_cast<int>(kButtons.size()) * kButton + (static_cast<int>(kButtons.size()) - 1) * kSmallGap;
    const int textLeft = row.left() + kMargin + kIcon + kMargin;
    const int buttonsLeft = row.right() + 1 - kMargin - buttonsWidth;
    const int textWidth = qMax(0, buttonsLeft - kMargin - textLeft);
    const int top = middle - textHeight(nameMetrics, statusMetrics) / 2;
    const int statusTop = top + nameMetrics.height() + kSmallGap / 2;
    const int noteTop = statusTop + statusMetrics.height() + kSmallGap / 2;
    const int barTop = noteTop + (statusMetrics.height() - kBar) / 2;

    const auto placed = [&](const QRect& rect) { return QStyle::visualRect(direction, row, rect); };
    Layout result;
    result.icon = placed({row.left() + kMargin, middle - kIcon / 2, kIcon, kIcon});
    result.name = placed({textLeft, top, textWidth, nameMetrics.height()});
    result.status = placed({textLeft, statusTop, textWidth, statusMetrics.height()});
    result.note = placed({textLeft, noteTop, textWidth, statusMetrics.height()});
    result.bar = placed({textLeft, barTop, textWidth, kBar});
    int left = buttonsLeft;
    for (QRect& button : result.buttons) {
        button = placed({left, middle - kButton / 2, kButton, kButton});
        left += kButton + kSmallGap;
    }
    return result;
}

std::optional<Button> Layout::buttonAt(QPoint position) const {
    for (const Button button : kButtons) {
        if (rectOf(button).contains(position)) return button;
    }
    return std::nullopt;
}

bool isEnabled(Button button, JobState state) {
    switch (button) {
        case Button::PauseContinue:
            return statusNotFinished(state);
        case Button::Remove:
            return true;
        case Button::Reveal:
            return statusNotQueuedAndPaused(state);
    }
    return false;
}

}  // namespace jobrow
