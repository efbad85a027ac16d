#include "ui/look/Appearance.h"

#include "support/desktop/Desktop.h"
#include "ui/look/Colors.h"

#include <QApplication>
#include <QFrame>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

namespace {

/// Fusion draws the frames of check boxes and radio buttons darker than the window, which is invisible on a
/// dark one, and default buttons, chosen items, lists and texts the same with the keyboard focus as without.
class VisibleIndicators : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const auto* focus = qstyleoption_cast<const QStyleOptionFocusRect*>(option);
        if (element == PE_FrameFocusRect && focus && option->state.testFlag(State_KeyboardFocusChange) &&
            focus->backgroundColor == option->palette.color(QPalette::Highlight)) {
            painter->save();
            painter->setPen(option->palette.color(QPalette::HighlightedText));
            painter->setBrush(Qt::NoBrush);
            painter->drawRect(option->rect.adjusted(1, 1, -2, -2));
            painter->restore();
        }
        const bool isBox = element == PE_IndicatorCheckBox;
        if ((!isBox && element != PE_IndicatorRadioButton) || !colors::isDark(option->palette)) return;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(colors::restingBar(option->palette));
        painter->setBrush(Qt::NoBrush);
        const QRectF frame = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
        const double radius = isBox ? 2 : frame.width() / 2;
        painter->drawRoundedRect(frame, radius, radius);
        painter->restore();
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        QProxyStyle::drawControl(element, option, painter, widget);
        if (!option->state.testFlag(State_HasFocus)) return;
        constexpr double kInset = 3.5;
        constexpr double kRadius = 2;
        const auto drawFrame = [&](QPalette::ColorRole role, double inset) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(option->palette.color(role));
            painter->setBrush(Qt::NoBrush);
            painter->drawRoundedRect(QRectF(option->rect).adjusted(inset, inset, -inset, -inset), kRadius,
                                     kRadius);
            painter->restore();
        };
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (element == CE_ShapedFrame && frame && frame->frameShape == QFrame::StyledPanel)
            drawFrame(QPalette::Highlight, 0.5);
        if (element == CE_PushButton && option->state.testFlag(State_KeyboardFocusChange))
            drawFrame(QPalette::ButtonText, kInset);
    }
};

QPalette darkPalette() {
    const QColor window(0x2b, 0x2d, 0x30);
    const QColor base(0x1f, 0x20, 0x23);
    const QColor text(0xec, 0xec, 0xee);
    const QColor disabled(0x7d, 0x80, 0x85);
    QPalette palette(QColor(0x3a, 0x3d, 0x41), window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText,
                            QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::PlaceholderText, disabled);
    palette.setColor(QPalette::Highlight, QColor(0x4a, 0x90, 0xd9));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x7a, 0xb4, 0xf0));
    return palette;
}

}  // namespace

void useDarkPalette(bool dark) {
    const QPalette platform = QApplication::style()->standardPalette();
    QApplication::setPalette(dark && !colors::isDark(platform) ? darkPalette() : QPalette());
}

void useVisibleIndicators() {
    if (QApplication::style()->name() == u"fusion") QApplication::setStyle(new VisibleIndicators("fusion"));
}

void followDesktopAppearance(Desktop& desktop) {
    useVisibleIndicators();
    // If the platform's palette is already dark, there is nothing to do.
    if (colors::isDark(QApplication::palette())) return;
    QObject::connect(&desktop, &Desktop::appearanceChanged, qApp,
                     [&desktop] { useDarkPalette(desktop.prefersDark()); });
}
