#include "ui/look/TabularText.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace {

int widestDigit(const QFontMetrics& metrics) {
    int widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    return widest;
}

bool isDigit(QChar letter) {
    return letter >= u'0' && letter <= u'9';
}

}  // namespace

bool hasTabularFigures(const QFontMetrics& metrics) {
    const int width = metrics.horizontalAdvance(u'0');
    return std::ranges::all_of(QStringLiteral("123456789"),
                               [&](QChar digit) { return metrics.horizontalAdvance(digit) == width; });
}

void drawTabularText(QPainter& painter, const QRect& rect, const QString& text,
                     Qt::LayoutDirection direction) {
    constexpr int kAlignment = static_cast<int>(Qt::AlignVCenter) | Qt::TextSingleLine;
    const QFontMetrics metrics = painter.fontMetrics();
    const QString shown = metrics.elidedText(text, Qt::ElideRight, rect.width());
    // A line with both text directions cannot be composed of parts.
    if (direction == Qt::RightToLeft || hasTabularFigures(metrics)) {
        painter.drawText(rect, kAlignment | static_cast<int>(Qt::AlignLeading), shown);
        return;
    }
    const int digitWidth = widestDigit(metrics);
    QRect rest = rect;
    for (qsizetype begin = 0; begin < shown.size() && rest.isValid();) {
        qsizetype end = begin + 1;
        if (!isDigit(shown[begin])) {
            while (end < shown.size() && !isDigit(shown[end]))
                ++end;
        }
        const QString piece = shown.mid(begin, end - begin);
        const int width = isDigit(shown[begin]) ? digitWidth : metrics.horizontalAdvance(piece);
        painter.drawText(
            QRect(rest.left(), rest.top(), width, rest.height()),
            kAlignment | static_cast<int>(isDigit(shown[begin]) ? Qt::AlignHCenter : Qt::AlignLeft), piece);
        rest.setLeft(rest.left() + width);
        begin = end;
    }
}
