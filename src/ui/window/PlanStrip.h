#pragma once

#include "convert/plan/ConversionPlan.h"

#include <QWidget>

#include <array>
#include <optional>

class ElidedLabel;
class FlatButton;
class QLabel;

/// What the conversion of the movie on the sheet will do, in four lines. Its height depends on the font only.
/// Main thread only.
class PlanStrip : public QWidget {
    Q_OBJECT

public:
    explicit PlanStrip(QWidget* parent = nullptr);

    /// Empty: only the kinds of tracks are shown.
    void setPlan(const std::optional<ConversionPlan>& plan);

Q_SIGNALS:
    /// The user takes the subtitle file off.
    void subtitleFileRemoved();

protected:
    void changeEvent(QEvent* event) override;

private:
    struct Line {
        QLabel* kind = nullptr;
        ElidedLabel* name = nullptr;
        ElidedLabel* outcome = nullptr;
    };
    enum Row { Picture, Sound, Subtitles, LeftOut, RowCount };

    void addLine(Row row, const QString& name, const QString& icon);
    void setUpFonts();
    void showReasons();

    std::array<Line, RowCount> m_lines;
    ElidedLabel* m_subtitleFile = nullptr;
    FlatButton* m_remove = nullptr;
    FlatButton* m_why = nullptr;
    ConversionPlan m_plan;
};
