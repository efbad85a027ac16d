#include "ui/widgets/ElidedLabel.h"

#include "ui/widgets/ToolTip.h"

#include <QPainter>

ElidedLabel::ElidedLabel(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
    if (m_text == text) return;
    m_text = text;
    setAccessibleName(text);
    setToolTip(shown() == text ? QString() : plainToolTip(text));
    updateGeometry();
    update();
}

QString ElidedLabel::shown() const {
    return fontMetrics().elidedText(m_text, Qt::ElideMiddle, width());
}

QSize ElidedLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(m_text), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine,
                     shown());
}

void ElidedLabel::resizeEvent(QResizeEvent*) {
    setToolTip(shown() == m_text ? QString() : plainToolTip(m_text));
}
