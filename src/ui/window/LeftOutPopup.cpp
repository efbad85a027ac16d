#include "ui/window/LeftOutPopup.h"

#include "ui/look/Colors.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kHighest = 320;
constexpr int kNameWidth = 300;
constexpr int kReasonWidth = 260;

/// As wide as its text, at most `width`.
QLabel* makeLabel(const QString& text, int width, colors::Tone tone, QWidget* parent) {
    auto* label = new QLabel(parent);
    QPalette palette = parent->palette();
    palette.setColor(QPalette::WindowText, colors::text(palette, tone));
    label->setPalette(palette);
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    label->setFixedWidth(qMin(width, label->fontMetrics().horizontalAdvance(text) + 2));
    label->setMinimumHeight(label->heightForWidth(label->width()));
    return label;
}

}  // namespace

LeftOutPopup::LeftOutPopup(const QList<LeftOutTrack>& tracks, QWidget* parent) : QFrame(parent, Qt::Popup) {
    setObjectName(QStringLiteral("leftOutPopup"));
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameShape(QFrame::StyledPanel);
    auto* list = new QWidget;
    auto* grid = new QGridLayout(list);
    grid->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    grid->setHorizontalSpacing(kMargin);
    grid->setVerticalSpacing(kGap);
    QStringList all;
    for (const LeftOutTrack& track : tracks) {
        const int row = grid->rowCount();
        grid->addWidget(makeLabel(track.name, kNameWidth, colors::Tone::Normal, list), row, 0,
                        Qt::AlignTop | Qt::AlignLeading);
        grid->addWidget(makeLabel(track.reason, kReasonWidth, colors::Tone::Secondary, list), row, 1,
                        Qt::AlignTop | Qt::AlignLeading);
        all.append(track.name + ": " + track.reason);
    }
    setAccessibleName(tr("Left out"));
    setAccessibleDescription(all.join(u'\n'));
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(list);
    const QSize whole = list->sizeHint();
    const bool scrolls = whole.height() > kHighest;
    const int bar = scrolls ? scroll->verticalScrollBar()->sizeHint().width() : 0;
    scroll->setFixedSize(whole.width() + bar, qMin(whole.height(), kHighest));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
    setFocusProxy(scroll);
}

void LeftOutPopup::showBelow(const QWidget& anchor) {
    adjustSize();
    const QRect screen = anchor.screen()->availableGeometry();
    QRect place(anchor.mapToGlobal(QPoint(0, anchor.height() + kGap / 2)), size());
    if (place.bottom() > screen.bottom()) place.moveBottom(anchor.mapToGlobal(QPoint(0, -kGap / 2)).y());
    place.moveLeft(qBound(screen.left(), place.left(), qMax(screen.left(), screen.right() - place.width())));
    move(place.topLeft());
    show();
    setFocus();
}

void LeftOutPopup::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        close();
    } else {
        QFrame::keyPressEvent(event);
    }
}
