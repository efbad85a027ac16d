#include "ui/window/JobRow.h"

#include "support/base/Texts.h"
#include "ui/window/PosterFrame.h"

#include <QGuiApplication>
#include <QStyle>

#include <algorithm>

namespace jobrow {

namespace {

constexpr int kHeight = 72;
constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kSmallGap = 4;
constexpr int kLineGap = 2;
constexpr int kBadge = 20;
constexpr int kIcon = 24;
constexpr int kButton = 32;
constexpr int kBar = 6;

QFont scaled(const QFont& font, double factor) {
    QFont result = font;
    if (font.pointSizeF() > 0) {
        result.setPointSizeF(font.pointSizeF() * factor);
    } else {
        result.setPixelSize(qRound(font.pixelSize() * factor));
    }
    return result;
}

int textHeight(const QFont& font) {
    return QFontMetrics(nameFont(font)).height() + 2 * (kLineGap + QFontMetrics(textFont(font)).height());
}

/// The row's buttons from the end of the row on, for left to right. Returns where they begin.
int placeButtons(QList<PlacedButton>& buttons, const QRect& row, const Look& look) {
    const QFontMetrics metrics(textFont(look.font));
    int end = row.right() + 1 - kMargin;
    const QList<Button> all = buttonsOf(look.state);
    const bool haveText = std::ranges::any_of(all, [](Button each) { return !textOf(each).isEmpty(); });
    for (qsizetype i = all.size() - 1; i >= 0; --i) {
        const QString text = textOf(all[i]);
        const int width = text.isEmpty() ? kButton : metrics.horizontalAdvance(text) + 4 * kGap;
        const int height = qMax(kButton, metrics.height() + kGap);
        const QRect rect(end - width, row.center().y() + 1 - height / 2, width, height);
        buttons.prepend({all[i], QStyle::visualRect(look.direction, row, rect)});
        end = rect.left() - (haveText ? kGap : kSmallGap);
    }
    return buttons.isEmpty() ? end : end + (haveText ? kGap : kSmallGap);
}

}  // namespace

QList<Button> buttonsOf(JobState state) {
    switch (state) {
        case JobState::Queued:
        case JobState::Converting:
        case JobState::Paused:
            return {Button::PauseContinue, Button::Remove};
        case JobState::Finished:
            return {Button::Reveal, Button::More};
        case JobState::Failed:
            return {Button::TryAgain, Button::Explain};
    }
    return {};
}

QString textOf(Button button) {
    switch (button) {
        case Button::TryAgain:
            return Texts::tr("Try Again");
        case Button::Explain:
            return Texts::tr("Why?") + (QGuiApplication::isRightToLeft() ? " ←" : " →");
        case Button::PauseContinue:
        case Button::Remove:
        case Button::Reveal:
        case Button::More:
            break;
    }
    return {};
}

QFont nameFont(const QFont& font) {
    constexpr double kLarger = 1.08;
    QFont bold = scaled(font, kLarger);
    bold.setWeight(QFont::DemiBold);
    return bold;
}

QFont textFont(const QFont& font) {
    constexpr double kSmaller = 0.94;
    return scaled(font, kSmaller);
}

int height(const QFont& font) {
    return qMax(kHeight, textHeight(font) + 2 * kGap);
}

Layout layout(const QRect& row, const Look& look) {
    const QFontMetrics name(nameFont(look.font));
    const QFontMetrics text(textFont(look.font));
    const auto placed = [&](const QRect& rect) { return QStyle::visualRect(look.direction, row, rect); };
    const int middle = row.center().y() + 1;
    Layout result;

    const int pictureWidth = look.hasPoster ? PosterFrame::kSize.width() : kIcon;
    const QRect picture(row.left() + kMargin, middle - PosterFrame::kSize.height() / 2, pictureWidth,
                        PosterFrame::kSize.height());
    if (look.hasPoster) {
        result.poster = placed(picture);
        constexpr int kOutside = 8;  // The badge stands out of the corner.
        result.badge = placed({picture.right() + 1 - kBadge + kOutside,
                               picture.bottom() + 1 - kBadge + kOutside / 2, kBadge, kBadge});
    }
    result.icon = placed({picture.center().x() + 1 - kIcon / 2, middle - kIcon / 2, kIcon, kIcon});

    const int left = picture.right() + 1 + kMargin;
    const int buttonsLeft = placeButtons(result.buttons, row, look);
    const int width = qMax(0, buttonsLeft - kMargin - left);
    const int top = middle - textHeight(look.font) / 2;
    const int statusTop = top + name.height() + kLineGap;
    const int noteTop = statusTop + text.height() + kLineGap;
    const int percentWidth = text.horizontalAdvance(QStringLiteral("100 %"));
    const int barWidth = qMax(0, width - kMargin - percentWidth);
    result.name = placed({left, top, width, name.height()});
    result.status = placed({left, statusTop, width, text.height()});
    result.note = placed({left, noteTop, width, text.height()});
    result.bar = placed({left, noteTop + (text.height() - kBar) / 2, barWidth, kBar});
    result.percent = placed({left + width - percentWidth, noteTop, percentWidth, text.height()});
    return result;
}

std::optional<Button> Layout::buttonAt(QPoint position) const {
    const auto found =
        std::ranges::find_if(buttons, [&](const PlacedButton& each) { return each.rect.contains(position); });
    return found == buttons.end() ? std::nullopt : std::optional(found->button);
}

QRect Layout::rectOf(Button button) const {
    const auto found = std::ranges::find(buttons, button, &PlacedButton::button);
    return found == buttons.end() ? QRect() : found->rect;
}

}  // namespace jobrow
