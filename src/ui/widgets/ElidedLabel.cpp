#include "ui/widgets/ElidedLabel.h"

#include "ui/look/Accessibility.h"
#include "ui/widgets/ToolTip.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

ElidedLabel::ElidedLabel(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    accessibility::setRole(*this, QAccessible::StaticText);
}

void ElidedLabel::setText(const QString& text) {
    if (m_text == text) return;
    m_text = text;
    setAccessibleName(text);
    refreshToolTip();
    updateGeometry();
    update();
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode) {
    m_mode = mode;
    update();
}

void ElidedLabel::setTone(colors::Tone tone) {
    if (m_tone == tone) return;
    m_tone = tone;
    update();
}

QString ElidedLabel::shown() const {
    return fontMetrics().elidedText(m_text, m_mode, width());
}

void ElidedLabel::refreshToolTip() {
    setToolTip(shown() == m_text ? QString() : plainToolTip(m_text));
}

QSize ElidedLabel::sizeHint() const {
    // Widths are fractions of pixels, and a text that is too long by one loses several letters.
    return {fontMetrics().horizontalAdvance(m_text) + 1, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

void ElidedLabel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) updateGeometry();
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(colors::text(palette(), m_tone));
    painter.drawText(rect(), static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine,
                     shown());
    if (!hasFocus()) return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

void ElidedLabel::resizeEvent(QResizeEvent*) {
    refreshToolTip();
}
