#include "ui/window/JobDelegate.h"

#include "app/queue/JobTexts.h"
#include "ui/look/Colors.h"
#include "ui/look/Icons.h"
#include "ui/look/TabularText.h"
#include "ui/window/JobListModel.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPainter>

namespace {

QFont nameFont(const QFont& font) {
    QFont bold = font;
    bold.setWeight(QFont::DemiBold);
    return bold;
}

QString iconOfState(JobState state) {
    switch (state) {
        case JobState::Queued:
            return "state-queued";
        case JobState::Converting:
            return "state-converting";
        case JobState::Paused:
            return "state-paused";
        case JobState::Finished:
            return "state-finished";
        case JobState::Failed:
            return "state-failed";
    }
    return {};
}

JobState stateOf(const QModelIndex& index) {
    return static_cast<JobState>(index.data(JobListModel::StateRole).toInt());
}

colors::Tone toneOf(JobNote::Verdict verdict) {
    switch (verdict) {
        case JobNote::Verdict::Whole:
            return colors::Tone::Good;
        case JobNote::Verdict::Damaged:
            return colors::Tone::Warning;
        case JobNote::Verdict::Failed:
            return colors::Tone::Problem;
        case JobNote::Verdict::None:
        case JobNote::Verdict::Unknown:
            break;
    }
    return colors::Tone::Secondary;
}

QIcon stateIcon(JobState state, JobNote::Verdict verdict) {
    using enum JobNote::Verdict;
    if (verdict == None || verdict == Unknown) return symbolicIcon(iconOfState(state));
    return symbolicIcon(verdict == Damaged ? "state-damaged" : iconOfState(state), toneOf(verdict));
}

/// The verdict, in its colour, and as much of the plan as there is room for.
void paintNote(QPainter* painter, const QRect& rect, const JobNote& note,
               const QStyleOptionViewItem& option) {
    const QFontMetrics metrics = painter->fontMetrics();
    QRect rest = rect;
    const auto draw = [&](const QString& text, const QColor& color) {
        const QString shown = metrics.elidedText(text, Qt::ElideRight, rest.width());
        painter->setPen(color);
        painter->drawText(QStyle::visualRect(option.direction, rect, rest),
                          static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine, shown);
        rest.setLeft(rest.left() + metrics.horizontalAdvance(shown));
    };
    const QColor secondary = colors::secondaryText(option.palette);
    if (note.verdictText.isEmpty()) {
        draw(note.plan, secondary);
        return;
    }
    draw(note.verdictText, colors::text(option.palette, toneOf(note.verdict)));
    constexpr int kFewLetters = 12;
    if (!note.plan.isEmpty() && rest.width() > kFewLetters * metrics.averageCharWidth())
        draw(JobNote::separator() + note.plan, secondary);
}

void paintBar(QPainter* painter, const QRect& bar, double percent, JobState state, const QPalette& palette,
              Qt::LayoutDirection direction) {
    constexpr double kWhole = 100;
    const double radius = bar.height() / 2.0;
    painter->setPen(Qt::NoPen);
    painter->setBrush(colors::track(palette));
    painter->drawRoundedRect(bar, radius, radius);
    const double share = qBound(0.0, percent / kWhole, 1.0);
    if (share <= 0) return;
    QRect filled = bar;
    filled.setWidth(qMax(bar.height(), qRound(bar.width() * share)));
    painter->setBrush(state == JobState::Converting ? palette.color(QPalette::Highlight)
                                                    : colors::restingBar(palette));
    painter->drawRoundedRect(QStyle::visualRect(direction, bar, filled), radius, radius);
}

}  // namespace

QSize JobDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {0, jobrow::height(QFontMetrics(nameFont(option.font)))};
}

jobrow::Layout JobDelegate::layoutOf(const QStyleOptionViewItem& option) {
    return jobrow::layout(option.rect, QFontMetrics(nameFont(option.font)), QFontMetrics(option.font),
                          option.direction);
}

QString JobDelegate::titleOf(jobrow::Button button, JobState state) {
    switch (button) {
        case jobrow::Button::PauseContinue:
            if (state == JobState::Queued) return tr("Start now");
            return state == JobState::Paused ? tr("Continue") : tr("Pause");
        case jobrow::Button::Remove:
            return statusIsRunning(state) ? tr("Stop and remove") : tr("Remove from the list");
        case jobrow::Button::Reveal:
            return state == JobState::Failed ? tr("Why did it fail?") : tr("Show the file");
    }
    return {};
}

QString JobDelegate::iconOf(jobrow::Button button, JobState state) {
    switch (button) {
        case jobrow::Button::PauseContinue:
            return statusIsRunning(state) ? "job-pause" : "job-continue";
        case jobrow::Button::Remove:
            return "job-remove";
        case jobrow::Button::Reveal:
            return state == JobState::Failed ? "job-explain" : "job-reveal";
    }
    return {};
}

void JobDelegate::setHot(const QModelIndex& index, std::optional<jobrow::Button> button, bool isPressed) {
    m_hotIndex = index;
    m_hotButton = button;
    m_isPressed = isPressed;
}

void JobDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool isHovered = option.state.testFlag(QStyle::State_MouseOver);
    if (isSelected || isHovered)
        painter->fillRect(option.rect, isSelected ? colors::selectedRow(option.palette)
                                                  : colors::hoveredRow(option.palette));
    painter->fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1),
                      isSelected ? option.palette.color(QPalette::Base) : colors::hairline(option.palette));
    const jobrow::Layout layout = layoutOf(option);
    const JobState state = stateOf(index);
    const auto note = index.data(JobListModel::NoteRole).value<JobNote>();
    stateIcon(state, note.verdict).paint(painter, layout.icon);

    const int alignment = static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine;
    painter->setLayoutDirection(option.direction);
    painter->setFont(nameFont(option.font));
    painter->setPen(option.palette.color(QPalette::Text));
    painter->drawText(
        layout.name, alignment,
        painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideMiddle, layout.name.width()));
    painter->setFont(option.font);
    painter->setPen(colors::secondaryText(option.palette));
    drawTabularText(*painter, layout.status, index.data(JobListModel::StatusRole).toString(),
                    option.direction);
    if (state == JobState::Converting || state == JobState::Paused) {
        paintBar(painter, layout.bar, index.data(JobListModel::ProgressRole).toDouble(), state,
                 option.palette, option.direction);
    } else {
        paintNote(painter, layout.note, note, option);
    }

    const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);
    const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
    const bool isCurrent = hasFocus || (isSelected && view && view->currentIndex() == index);
    if (isHovered || isCurrent) paintButtons(painter, option, index, layout);
    if (hasFocus && option.state.testFlag(QStyle::State_KeyboardFocusChange)) {
        painter->setPen(QPen(option.palette.color(QPalette::Highlight), 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option.rect.adjusted(1, 1, -1, -2));
    }
    painter->restore();
}

void JobDelegate::paintButtons(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index, const jobrow::Layout& layout) const {
    constexpr int kInset = 6;
    constexpr int kRadius = 6;
    const JobState state = stateOf(index);
    for (const jobrow::Button button : jobrow::kButtons) {
        const bool isEnabled = jobrow::isEnabled(button, state);
        const QRect rect = layout.rectOf(button);
        const bool isHot = m_hotIndex == index && m_hotButton == button && isEnabled;
        if (isHot) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(m_isPressed ? colors::pressedButton(option.palette)
                                          : colors::hotButton(option.palette));
            painter->drawRoundedRect(rect, kRadius, kRadius);
        }
        symbolicIcon(iconOf(button, state))
            .paint(painter, rect.adjusted(kInset, kInset, -kInset, -kInset), Qt::AlignCenter,
                   isEnabled ? QIcon::Normal : QIcon::Disabled);
    }
}
