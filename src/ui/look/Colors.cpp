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
