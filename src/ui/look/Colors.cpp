#include "ui/look/Colors.h"

namespace colors {

namespace {

QColor mixed(const QColor& a, const QColor& b, float shareOfB) {
    const float rest = 1 - shareOfB;
    return QColor::fromRgbF(a.redF() * rest + b.redF() * shareOfB, a.greenF() * rest + b.greenF() * shareOfB,
                            a.blueF() * rest + b.blueF() * shareOfB);
}

QColor towardsText(const QPalette& palette, float share) {
    return mixed(palette.color(QPalette::Base), palette.color(QPalette::Text), share);
}

}  // namespace

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QColor text(const QPalette& palette, Tone tone) {
    switch (tone) {
        case Tone::Normal:
            return palette.color(QPalette::WindowText);
        case Tone::Secondary:
            return secondaryText(palette);
        case Tone::Good:
            return isDark(palette) ? QColor(0x67, 0xc9, 0x90) : QColor(0x1a, 0x74, 0x3c);
        case Tone::Warning:
            return isDark(palette) ? QColor(0xe9, 0xb0, 0x4d) : QColor(0x8a, 0x56, 0x00);
        case Tone::Problem:
            return isDark(palette) ? QColor(0xf2, 0x8b, 0x82) : QColor(0xb3, 0x26, 0x1e);
        case Tone::Link:
            return mixed(palette.color(QPalette::Highlight), palette.color(QPalette::WindowText), 0.35F);
    }
    return {};
}

QColor secondaryText(const QPalette& palette) {
    return towardsText(palette, 0.66F);
}

QColor track(const QPalette& palette) {
    return towardsText(palette, 0.14F);
}

QColor restingBar(const QPalette& palette) {
    return towardsText(palette, 0.42F);
}

QColor hairline(const QPalette& palette) {
    return towardsText(palette, 0.10F);
}

QColor placeholder(const QPalette& palette) {
    return towardsText(palette, 0.08F);
}

QColor hoveredRow(const QPalette& palette) {
    return towardsText(palette, 0.05F);
}

QColor selectedRow(const QPalette& palette) {
    return mixed(palette.color(QPalette::Base), palette.color(QPalette::Highlight), 0.18F);
}

QColor hotButton(const QPalette& palette) {
    return towardsText(palette, 0.14F);
}

QColor pressedButton(const QPalette& palette) {
    return towardsText(palette, 0.26F);
}

}  // namespace colors
