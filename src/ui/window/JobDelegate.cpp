#include "ui/window/JobDelegate.h"

#include "app/queue/JobTexts.h"
#include "settings/Settings.h"
#include "ui/look/Colors.h"
#include "ui/look/Icons.h"
#include "ui/look/TabularText.h"
#include "ui/window/JobListModel.h"
#include "ui/window/PosterFrame.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPainter>

namespace {

using Verdict = JobNote::Verdict;

constexpr int kRadius = 6;
constexpr int kLine = static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine;

JobState stateOf(const QModelIndex& index) {
    return static_cast<JobState>(index.data(JobListModel::StateRole).toInt());
}

bool isUnderWay(JobState state) {
    return state == JobState::Converting || state == JobState::Paused;
}

QString iconOfState(JobState state, Verdict verdict) {
    switch (state) {
        case JobState::Queued:
            return "state-queued";
        case JobState::Converting:
            return "state-converting";
        case JobState::Paused:
            return "state-paused";
        case JobState::Finished:
            return verdict == Verdict::Damaged ? "state-damaged" : "state-finished";
        case JobState::Failed:
            return "state-failed";
    }
    return {};
}

colors::Tone toneOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Whole:
            return colors::Tone::Good;
        case Verdict::Damaged:
            return colors::Tone::Warning;
        case Verdict::Failed:
            return colors::Tone::Problem;
        case Verdict::None:
        case Verdict::Unknown:
            break;
    }
    return colors::Tone::Secondary;
}

colors::Tone toneOf(JobState state, Verdict verdict) {
    switch (state) {
        case JobState::Converting:
            return colors::Tone::Link;
        case JobState::Paused:
            return colors::Tone::Normal;
        case JobState::Finished:
            return verdict == Verdict::None ? colors::Tone::Good : toneOf(verdict);
        case JobState::Failed:
            return colors::Tone::Problem;
        case JobState::Queued:
            break;
    }
    return colors::Tone::Secondary;
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

void paintPercent(QPainter* painter, const QRect& rect, double percent, const QStyleOptionViewItem& option) {
    const QString text = JobDelegate::tr("%1 %").arg(static_cast<int>(qBound(0.0, percent, 100.0)));
    const int width = qMin(rect.width(), painter->fontMetrics().horizontalAdvance(text) + 1);
    QRect place = rect;
    place.setLeft(rect.right() + 1 - width);  // Its end stays where it is.
    painter->setPen(option.palette.color(QPalette::Text));
    drawTabularText(*painter, QStyle::visualRect(option.direction, rect, place), text, option.direction);
}

/// A push button of the platform's style.
void paintTextButton(QPainter* painter, const QRect& rect, const QString& text,
                     const QStyleOptionViewItem& option, bool isHot, bool isPressed) {
    QStyleOptionButton button;
    button.initFrom(option.widget);
    button.rect = rect;
    button.text = text;
    button.state = QStyle::State_Enabled | (isPressed ? QStyle::State_Sunken : QStyle::State_Raised);
    button.state.setFlag(QStyle::State_MouseOver, isHot);
    button.fontMetrics = painter->fontMetrics();
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_PushButton, &button, painter, option.widget);
}

}  // namespace

/// What painting a row needs.
struct JobDelegate::Row {
    QPainter* painter;
    const QStyleOptionViewItem& option;
    const QModelIndex& index;
    JobState state;
    JobNote note;
    jobrow::Layout layout;
    QColor background;

    void drawText(const QRect& rect, const QString& text, Qt::TextElideMode mode) const {
        painter->drawText(rect, kLine, painter->fontMetrics().elidedText(text, mode, rect.width()));
    }
};

QSize JobDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {0, jobrow::height(option.font)};
}

jobrow::Layout JobDelegate::layoutOf(const QStyleOptionViewItem& option, const QModelIndex& index) {
    return jobrow::layout(option.rect, {.font = option.font,
                                        .state = stateOf(index),
                                        .hasPoster = settings::ShowPosters.value(),
                                        .direction = option.direction});
}

QRect JobDelegate::noteOf(const QStyleOptionViewItem& option, const QModelIndex& index) {
    const JobState state = stateOf(index);
    if (isUnderWay(state)) return {};
    const jobrow::Layout layout = layoutOf(option, index);
    const QString text = index.data(JobListModel::NoteRole).value<JobNote>().text();
    const QRect place = state == JobState::Failed ? layout.status : layout.note;
    const int width = QFontMetrics(jobrow::textFont(option.font)).horizontalAdvance(text);
    QRect shown = place;
    shown.setWidth(qMin(width, place.width()));
    return text.isEmpty() ? QRect() : QStyle::visualRect(option.direction, place, shown);
}

QString JobDelegate::titleOf(jobrow::Button button, JobState state) {
    using enum jobrow::Button;
    switch (button) {
        case PauseContinue:
            if (state == JobState::Queued) return tr("Start now");
            return state == JobState::Paused ? tr("Continue") : tr("Pause");
        case Remove:
            return statusIsRunning(state) ? tr("Stop and remove") : tr("Remove from the list");
        case Reveal:
            return tr("Show the file");
        case Explain:
            return tr("Why did it fail?");
        case TryAgain:
            return tr("Try Again");
        case More:
            return tr("All commands");
    }
    return {};
}

QString JobDelegate::iconOf(jobrow::Button button, JobState state) {
    using enum jobrow::Button;
    switch (button) {
        case PauseContinue:
            return statusIsRunning(state) ? "job-pause" : "job-continue";
        case Remove:
            return "job-remove";
        case Reveal:
            return "job-reveal";
        case More:
            return "job-more";
        case Explain:
            return "job-explain";
        case TryAgain:
            break;
    }
    return {};
}

void JobDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setLayoutDirection(option.direction);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool isHovered = option.state.testFlag(QStyle::State_MouseOver);
    const QPalette& palette = option.palette;
    const Row row{.painter = painter,
                  .option = option,
                  .index = index,
                  .state = stateOf(index),
                  .note = index.data(JobListModel::NoteRole).value<JobNote>(),
                  .layout = layoutOf(option, index),
                  .background = isSelected  ? colors::selectedRow(palette)
                                : isHovered ? colors::hoveredRow(palette)
                                            : palette.color(QPalette::Base)};
    if (isSelected || isHovered) painter->fillRect(option.rect, row.background);
    painter->fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1),
                      isSelected ? palette.color(QPalette::Base) : colors::hairline(palette));
    if (isSelected) {
        constexpr int kMark = 3;
        const QRect mark(option.rect.left(), option.rect.top(), kMark, option.rect.height() - 1);
        painter->fillRect(QStyle::visualRect(option.direction, option.rect, mark),
                          palette.color(QPalette::Highlight));
    }
    paintPicture(row);
    paintText(row);
    paintButtons(row);
    const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);
    if (hasFocus && option.state.testFlag(QStyle::State_KeyboardFocusChange)) {
        painter->setPen(QPen(palette.color(QPalette::Highlight), 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option.rect.adjusted(1, 1, -1, -2));
    }
    painter->restore();
}

void JobDelegate::paintPicture(const Row& row) {
    QPainter* painter = row.painter;
    const jobrow::Layout& layout = row.layout;
    const QIcon state =
        symbolicIcon(iconOfState(row.state, row.note.verdict), toneOf(row.state, row.note.verdict));
    const auto poster = row.index.data(JobListModel::PosterRole).value<QPixmap>();
    if (layout.poster.isValid()) paintPoster(*painter, layout.poster, poster, row.option.palette);
    if (!layout.poster.isValid() || poster.isNull()) {
        state.paint(painter, layout.icon);
        return;
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(row.background);
    painter->drawEllipse(layout.badge);
    constexpr int kInset = 3;
    state.paint(painter, layout.badge.adjusted(kInset, kInset, -kInset, -kInset));
}

void JobDelegate::paintText(const Row& row) const {
    QPainter* painter = row.painter;
    const QStyleOptionViewItem& option = row.option;
    painter->setFont(jobrow::nameFont(option.font));
    painter->setPen(option.palette.color(QPalette::Text));
    row.drawText(row.layout.name, row.index.data().toString(), Qt::ElideMiddle);
    painter->setFont(jobrow::textFont(option.font));
    // The reason of a failure is more important than the word for it.
    const bool isFailed = row.state == JobState::Failed;
    painter->setPen(colors::secondaryText(option.palette));
    drawTabularText(*painter, isFailed ? row.layout.note : row.layout.status,
                    row.index.data(JobListModel::StatusRole).toString(), option.direction);
    if (isUnderWay(row.state)) {
        const double percent = row.index.data(JobListModel::ProgressRole).toDouble();
        paintBar(painter, row.layout.bar, percent, row.state, option.palette, option.direction);
        paintPercent(painter, row.layout.percent, percent, option);
    } else {
        paintNote(row, isFailed ? row.layout.status : row.layout.note);
    }
}

/// As many parts as there is room for, the verdict in its colour.
void JobDelegate::paintNote(const Row& row, const QRect& rect) const {
    QPainter* painter = row.painter;
    const QStyleOptionViewItem& option = row.option;
    if (m_hot.isNote && m_hot.index == row.index) {
        QFont underlined = painter->font();
        underlined.setUnderline(true);
        painter->setFont(underlined);
    }
    const QFontMetrics metrics = painter->fontMetrics();
    constexpr int kFewLetters = 8;
    QRect rest = rect;
    const auto draw = [&](const QString& text, colors::Tone tone) {
        const QString shown = metrics.elidedText(text, Qt::ElideRight, rest.width());
        painter->setPen(colors::text(option.palette, tone));
        painter->drawText(QStyle::visualRect(option.direction, rect, rest), kLine, shown);
        rest.setLeft(rest.left() + metrics.horizontalAdvance(shown));
    };
    QString between;
    for (const JobNote::Part& part : row.note.parts) {
        if (!between.isEmpty() && rest.width() < kFewLetters * metrics.averageCharWidth()) return;
        draw(between, colors::Tone::Secondary);
        draw(part.text, part.isVerdict ? toneOf(row.note.verdict) : colors::Tone::Secondary);
        between = JobNote::separator();
    }
}

void JobDelegate::paintButtons(const Row& row) const {
    constexpr int kInset = 8;
    const QPalette& palette = row.option.palette;
    for (const auto& [button, rect] : row.layout.buttons) {
        const bool isHot = m_hot.index == row.index && m_hot.button == button;
        if (const QString text = jobrow::textOf(button); !text.isEmpty()) {
            paintTextButton(row.painter, rect, text, row.option, isHot, isHot && m_hot.isPressed);
            continue;
        }
        if (isHot) {
            row.painter->setPen(Qt::NoPen);
            row.painter->setBrush(m_hot.isPressed ? colors::pressedButton(palette)
                                                  : colors::hotButton(palette));
            row.painter->drawRoundedRect(rect, kRadius, kRadius);
        }
        const QSize size = rect.size() - QSize(2 * kInset, rect.height() - rect.width() + 2 * kInset);
        symbolicIcon(iconOf(button, row.state), isHot ? colors::Tone::Normal : colors::Tone::Secondary)
            .paint(row.painter, QStyle::alignedRect(row.option.direction, Qt::AlignCenter, size, rect));
    }
}
