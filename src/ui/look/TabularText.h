#pragma once

#include <QFontMetrics>
#include <QRect>
#include <QString>

class QPainter;

/// Draws one line of text in which every digit is as wide as the widest, so that a ticking number does not
/// push what follows it to and fro. Cut at its end where it does not fit.
void drawTabularText(QPainter& painter, const QRect& rect, const QString& text,
                     Qt::LayoutDirection direction);

/// Draws it with digits of this width, in points of the screen, whatever the font's. Left to right only.
void drawWithDigitsOf(int digitWidth, QPainter& painter, const QRect& rect, const QString& text);

/// Whether the font's digits are of one width by themselves.
bool hasTabularFigures(const QFontMetrics& metrics);
