#include "ui/widgets/FlatButton.h"

#include "ui/look/Colors.h"

#include <QPainter>
#include <QStyle>

namespace {

constexpr int kPadding = 4;
constexpr int kRadius = 4;

}  // namespace

FlatButton::FlatButton(QWidget* parent) : QPushButton(parent) {
    setFlat(true);
    setAutoDefault(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

int FlatButton::textWidth() const {
    return fontMetrics().size(Qt::TextShowMnemonic, text()).width();
}

QSize FlatButton::sizeHint() const {
    const int height = fontMetrics().height();
    const int width = icon().isNull() ? textWidth() + 2 * kPadding : height;
    return {width, height};
}

void FlatButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || isDown()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isDown() ? colors::pressedButton(palette()) : colors::hotButton(palette()));
        painter.drawRoundedRect(rect(), kRadius, kRadius);
    }
    if (icon().isNull()) {
        QFont font = painter.font();
        font.setUnderline(underMouse());
        painter.setFont(font);
        painter.setPen(colors::text(palette(), colors::Tone::Link));
        const bool isMarked = style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) != 0;
        painter.drawText(
            rect(),
            static_cast<int>(Qt::AlignCenter) | (isMarked ? Qt::TextShowMnemonic : Qt::TextHideMnemonic),
            text());
    } else {
        const int inset = height() / 4;
        icon().paint(&painter, rect().adjusted(inset, inset, -inset, -inset));
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    }
}
