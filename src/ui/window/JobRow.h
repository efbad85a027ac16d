#pragma once

#include "convert/JobState.h"

#include <QFont>
#include <QFontMetrics>
#include <QList>
#include <QRect>
#include <QString>

#include <optional>

/// The layout of a job's row, its fonts and its buttons. No painting here. Main thread only.
namespace jobrow {

enum class Button { PauseContinue, Remove, Reveal, More, TryAgain, Explain };

/// Those that a row in this state has, in their order.
QList<Button> buttonsOf(JobState state);
/// Its words, for buttons with text instead of an icon; empty: it has an icon.
QString textOf(Button button);

/// Of the name and of everything else, made from the list's font.
QFont nameFont(const QFont& font);
QFont textFont(const QFont& font);

/// 72 device-independent pixels, more if the font of the list needs it.
int height(const QFont& font);

/// What a layout depends on.
struct Look {
    QFont font;
    JobState state = JobState::Queued;
    bool hasPoster = false;  ///< There is room for a picture, whether it is there yet or not.
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

struct PlacedButton {
    Button button;
    QRect rect;
};

struct Layout {
    QRect poster;  ///< 16 : 9; null if there is no room for a picture.
    QRect badge;   ///< The state on the poster's corner.
    QRect icon;    ///< The state where there is no picture.
    QRect name;
    QRect status;
    QRect note;     ///< The third line.
    QRect bar;      ///< In its place for a job that is under way, and
    QRect percent;  ///< its number.
    QList<PlacedButton> buttons;

    std::optional<Button> buttonAt(QPoint position) const;
    /// Null: the row has no such button.
    QRect rectOf(Button button) const;
};

Layout layout(const QRect& row, const Look& look);

}  // namespace jobrow
