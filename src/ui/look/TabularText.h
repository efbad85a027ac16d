#pragma once

#include <QFontMetrics>
#include <QRect>
#include <QString>

class QPainter;

/// Draws one line of text with digits of equal width, so that changing numbers do not move the text behind
/// them. Text that is too long is shortened at its end. Main thread only.
void drawTabularText(QPainter& painter, const QRect& rect, const QString& text,
                     Qt::LayoutDirection direction);

/// Draws it with digits of this width, in points of the screen, whatever the font's. Left to right only.
void drawWithDigitsOf(int digitWidth, QPainter& painter, const QRect& rect, const QString& text);

/// Whether all digits of the font have the same width. Main thread only.
bool hasTabularFigures(const QFontMetrics& metrics);
