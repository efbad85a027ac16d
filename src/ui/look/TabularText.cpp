#include "ui/look/TabularText.h"

#include <QPainter>
#include <QRegularExpression>
#include <QStyle>

#include <algorithm>

namespace {

constexpr int kLine = static_cast<int>(Qt::AlignVCenter) | Qt::TextSingleLine;

int widestDigit(const QFontMetrics& metrics) {
    int widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    return widest;
}

}  // namespace

bool hasTabularFigures(const QFontMetrics& metrics) {
    const int width = metrics.horizontalAdvance(u'0');
    return std::ranges::all_of(QStringLiteral("123456789"),
                               [&](QChar digit) { return metrics.horizontalAdvance(digit) == width; });
}

void drawTabularText(QPainter& painter, const QRect& rect, const QString& text,
                     Qt::LayoutDirection direction) {
    const QFontMetrics metrics = painter.fontMetrics();
    const QString shown = metrics.elidedText(text, Qt::ElideRight, rect.width());
    // A line with both text directions cannot be composed of parts.
    if (direction == Qt::RightToLeft || hasTabularFigures(metrics)) {
        painter.drawText(rect, kLine | static_cast<int>(Qt::AlignLeading), shown);
        return;
    }
    drawWithDigitsOf(widestDigit(metrics), painter, rect, shown);
}

void drawWithDigitsOf(int digitWidth, QPainter& painter, const QRect& rect, const QString& text) {
    static const QRegularExpression pieces("[0-9]|[^0-9]+");
    QRect rest = rect;
    for (const QRegularExpressionMatch& match : pieces.globalMatch(text)) {
        const QString piece = match.captured();
        const bool isDigit = piece.at(0).isDigit();
        const int width = isDigit ? digitWidth : painter.fontMetrics().horizontalAdvance(piece);
        const Qt::Alignment place = isDigit ? Qt::AlignHCenter : Qt::AlignLeft;
        rest.setWidth(width);
        painter.drawText(rest, kLine | static_cast<int>(place), piece);
        rest.moveLeft(rest.left() + width);
    }
}
