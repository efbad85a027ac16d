#pragma once

#include <QList>
#include <QString>

/// The lines at the bottom of a terminal that show the running conversions and are redrawn in place. Main
/// thread only.
class ProgressLines {
public:
    struct Line {
        QString name;  ///< As output::shown() gives it.
        double percent = 0;
        QString remaining;  ///< "3m 20s"
    };

    /// Draws `lines` over the previous ones.
    void draw(const QList<Line>& lines);
    /// Removes the lines, so that other text can be printed there.
    void clear();

private:
    qsizetype m_drawn = 0;
};

/// One line of at most `columns` columns: the name, shortened in the middle if necessary, the bar, the
/// percentage and the remaining time.
QString progressLine(const ProgressLines::Line& line, int columns);
