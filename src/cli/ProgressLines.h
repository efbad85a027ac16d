#pragma once

#include <QList>
#include <QString>

/// The lines at the bottom of a terminal that show the running conversions and are redrawn in place.
class ProgressLines {
public:
    struct Line {
        QString name;
        double percent = 0;
        QString remaining;  ///< "3m 20s"
    };

    /// Draws `lines` over what was drawn before.
    void draw(const QList<Line>& lines);
    /// Removes what was drawn, so that something else can be printed there.
    void clear();

private:
    qsizetype m_drawn = 0;
};

/// One line of at most `columns` columns: the name, cut in the middle where it is too long, the bar,
/// percentage and ETA.
QString progressLine(const ProgressLines::Line& line, int columns);
