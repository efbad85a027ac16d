#include "ui/window/PosterFrame.h"

#include "ui/look/Colors.h"
#include "ui/look/Icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>

void paintPoster(QPainter& painter, const QRect& rect, const QPixmap& poster, const QPalette& palette) {
    constexpr double kCorner = 4;
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (poster.isNull()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors::placeholder(palette));
        painter.drawRoundedRect(rect, kCorner, kCorner);
    } else {
        QPainterPath corners;
        corners.addRoundedRect(rect, kCorner, kCorner);
        painter.setClipPath(corners, Qt::IntersectClip);
        painter.drawPixmap(rect, poster);
    }
    painter.restore();
}

PosterFrame::PosterFrame(QWidget* parent) : QWidget(parent) {
    setFixedSize(kSize);
}

void PosterFrame::setPoster(const QPixmap& poster) {
    if (poster.cacheKey() == m_poster.cacheKey()) return;
    m_poster = poster;
    update();
}

void PosterFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPoster(painter, rect(), m_poster, palette());
    if (!m_poster.isNull()) return;
    constexpr int kIcon = 24;
    const QRect place = QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, QSize(kIcon, kIcon), rect());
    symbolicIcon(QStringLiteral("track-picture"), colors::Tone::Secondary).paint(&painter, place);
}
