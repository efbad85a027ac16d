#include "ui/window/PlanStrip.h"

#include "convert/plan/PlanLines.h"
#include "ui/look/Accessibility.h"
#include "ui/look/Colors.h"
#include "ui/look/Icons.h"
#include "ui/widgets/ElidedLabel.h"
#include "ui/widgets/FlatButton.h"
#include "ui/window/LeftOutPopup.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>

using colors::Tone;

namespace {

constexpr int kGap = 8;
constexpr int kSmallGap = 4;

/// Painted again for every palette; an image in a label would keep its colours.
class KindIcon : public QWidget {
public:
    KindIcon(const QString& name, QWidget* parent) : QWidget(parent), m_icon(symbolicIcon(name)) {
        constexpr int kSize = 16;
        setFixedSize(kSize, kSize);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        constexpr double kSecondary = 0.66;
        QPainter painter(this);
        painter.setOpacity(kSecondary);
        m_icon.paint(&painter, rect());
    }

private:
    QIcon m_icon;
};

ElidedLabel* makeLabel(QWidget* parent, Tone tone) {
    auto* label = new ElidedLabel(parent);
    label->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    label->setTone(tone);
    return label;
}

/// An empty label would still have the layout's spacing around it.
void setTextOrHide(ElidedLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

}  // namespace

PlanStrip::PlanStrip(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("planStrip"));
    accessibility::setRole(*this, QAccessible::Grouping);
    setAccessibleName(tr("What becomes of the movie"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, kGap, 0, kGap);
    grid->setHorizontalSpacing(kGap);
    grid->setVerticalSpacing(kSmallGap);
    grid->setColumnStretch(2, 1);
    addLine(Picture, "picture", "track-picture");
    addLine(Sound, "sound", "page-audio");
    addLine(Subtitles, "subtitles", "page-subtitles");
    addLine(LeftOut, "leftOut", "track-left-out");
    setUpFonts();
    setPlan({});
}

void PlanStrip::addLine(Row row, const QString& name, const QString& icon) {
    auto* grid = static_cast<QGridLayout*>(layout());
    Line& line = m_lines[row];
    line.kind = new QLabel(this);
    line.name = makeLabel(this, row == LeftOut ? Tone::Secondary : Tone::Normal);
    line.outcome = makeLabel(this, Tone::Secondary);
    line.name->setObjectName(name + "Name");
    line.outcome->setObjectName(name + "Outcome");
    auto* parts = new QHBoxLayout;
    parts->setSpacing(kGap);
    if (row == Subtitles) {
        auto* file = new QHBoxLayout;
        file->setSpacing(2);
        m_subtitleFile = makeLabel(this, Tone::Normal);
        m_subtitleFile->setObjectName(QStringLiteral("subtitleFileName"));
        m_remove = new FlatButton(this);
        m_remove->setObjectName(QStringLiteral("removeSubtitleButton"));
        m_remove->setIcon(symbolicIcon("remove"));
        connect(m_remove, &FlatButton::clicked, this, &PlanStrip::subtitleFileRemoved);
        file->addWidget(m_subtitleFile);
        file->addWidget(m_remove);
        parts->addLayout(file);
    }
    parts->addWidget(line.name);
    parts->addWidget(line.outcome);
    if (row == LeftOut) {
        line.name->setElideMode(Qt::ElideRight);
        m_why = new FlatButton(this);
        m_why->setObjectName(QStringLiteral("whyButton"));
        m_why->setText(tr("&Why?"));
        m_why->setAccessibleName(tr("Why are tracks left out?"));
        connect(m_why, &FlatButton::clicked, this, &PlanStrip::showReasons);
        parts->addWidget(m_why);
    }
    parts->addStretch(1);
    grid->addWidget(new KindIcon(icon, this), row, 0, Qt::AlignVCenter);
    grid->addWidget(line.kind, row, 1);
    grid->addLayout(parts, row, 2);
}

void PlanStrip::setUpFonts() {
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    auto* grid = static_cast<QGridLayout*>(layout());
    const int height = qMax(QFontMetrics(bold).height(), fontMetrics().height());
    for (int row = 0; row < RowCount; ++row) {
        grid->setRowMinimumHeight(row, height);
        if (row != LeftOut) m_lines[static_cast<size_t>(row)].name->setFont(bold);
        QPalette secondary = palette();
        secondary.setColor(QPalette::WindowText, colors::text(palette(), Tone::Secondary));
        m_lines[static_cast<size_t>(row)].kind->setPalette(secondary);
    }
    m_subtitleFile->setFont(bold);
}

void PlanStrip::setPlan(const std::optional<ConversionPlan>& plan) {
    m_plan = plan.value_or(ConversionPlan());
    const PlanLines lines = planLines(m_plan);
    const std::array<const PlanLine*, RowCount> all = {&lines.picture, &lines.sound, &lines.subtitles,
                                                       &lines.leftOut};
    for (size_t row = 0; row < all.size(); ++row) {
        const PlanLine& line = *all[row];
        Line& shown = m_lines[row];
        shown.kind->setText(line.kind);
        setTextOrHide(shown.name, plan ? line.name : QString());
        setTextOrHide(shown.outcome, plan ? line.outcome : QString());
        shown.outcome->setTone(row != LeftOut && line.isUnchanged ? Tone::Good : Tone::Secondary);
    }
    setTextOrHide(m_subtitleFile, lines.subtitleFile);
    m_remove->setVisible(!lines.subtitleFile.isEmpty());
    const QString removal = tr("Leave “%1” out").arg(lines.subtitleFile);
    m_remove->setAccessibleName(removal);
    m_remove->setToolTip(removal.toHtmlEscaped());
    m_why->setVisible(plan && !lines.leftOut.name.isEmpty());
}

void PlanStrip::showReasons() {
    auto* popup = new LeftOutPopup(leftOutTracks(m_plan), this);
    popup->showBelow(*m_why);
}

void PlanStrip::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    const bool isLook = event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange;
    if (isLook && m_why) setUpFonts();
}
