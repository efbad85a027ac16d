#include "ui/window/UndoBar.h"

#include "app/queue/Removals.h"
#include "ui/look/Accessibility.h"
#include "ui/widgets/ElidedLabel.h"
#include "ui/widgets/FlatButton.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int kMargin = 16;
constexpr int kRadius = 8;

/// The bar is dark on every background.
QPalette darkPalette() {
    constexpr QColor kBackground(0x2b, 0x2f, 0x36);
    QPalette palette;
    for (const auto role : {QPalette::Window, QPalette::Base})
        palette.setColor(role, kBackground);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0x5a, 0xa9, 0xf5));
    return palette;
}

}  // namespace

UndoBar::UndoBar(Removals& removals, QWidget* parent)
    : QWidget(parent), m_removals(removals), m_label(new ElidedLabel(this)), m_undo(new FlatButton(this)) {
    constexpr int kHeight = 12;
    setObjectName(QStringLiteral("undoBar"));
    setPalette(darkPalette());
    accessibility::setRole(*this, QAccessible::Grouping);
    m_undo->setObjectName(QStringLiteral("undoButton"));
    m_undo->setText(tr("Undo"));
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    m_undo->setFont(bold);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, kHeight, kMargin, kHeight);
    layout->setSpacing(kMargin);
    layout->addWidget(m_label);
    layout->addWidget(m_undo);
    parent->installEventFilter(this);
    connect(m_undo, &FlatButton::clicked, &removals, &Removals::undo);
    connect(&removals, &Removals::changed, this, &UndoBar::refresh);
    refresh();
}

QWidget* UndoBar::undoButton() const {
    return m_undo;
}

void UndoBar::refresh() {
    const QString text = m_removals.text();
    if (text.isEmpty()) {
        const bool hadFocus = m_undo->hasFocus();
        hide();
        if (hadFocus) Q_EMIT focusReleased();
        return;
    }
    m_label->setText(text);
    setAccessibleName(text);
    m_undo->setAccessibleDescription(text);
    place();
    show();
    raise();
    accessibility::announce(*this, text);
}

void UndoBar::place() {
    constexpr int kWidest = 480;
    const QRect area = parentWidget()->rect();
    const QSize size = sizeHint().boundedTo({std::min(kWidest, area.width() - 2 * kMargin), area.height()});
    setGeometry(QRect({(area.width() - size.width()) / 2, area.height() - size.height() - kMargin}, size));
}

bool UndoBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisibleTo(parentWidget())) place();
    return QWidget::eventFilter(watched, event);
}

void UndoBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(rect(), kRadius, kRadius);
}
