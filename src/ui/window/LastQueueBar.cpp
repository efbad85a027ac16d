#include "ui/window/LastQueueBar.h"

#include "app/queue/LastQueue.h"
#include "ui/look/Colors.h"
#include "ui/widgets/ElidedLabel.h"
#include "ui/widgets/FlatButton.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

LastQueueBar::LastQueueBar(QWidget* parent) : QWidget(parent) {
    constexpr int kMargin = 16;
    constexpr int kGap = 8;
    constexpr int kSmallGap = 6;
    setObjectName(QStringLiteral("lastQueueBar"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_label = new ElidedLabel(this);
    m_continue = new QPushButton(tr("Continue"), this);
    m_continue->setObjectName(QStringLiteral("continueButton"));
    m_continue->setAutoDefault(true);
    m_continue->setToolTip(tr("Put them into the list again and convert them"));
    m_forget = new FlatButton(this);
    m_forget->setText(tr("Forget"));
    m_forget->setObjectName(QStringLiteral("forgetButton"));
    m_forget->setToolTip(tr("Leave them out; no file is deleted"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, kSmallGap, kMargin, kSmallGap + 1);
    layout->setSpacing(kGap);
    layout->addWidget(m_label, 1);
    layout->addWidget(m_forget);
    layout->addSpacing(kGap);
    layout->addWidget(m_continue);
    setTabOrder(m_continue, m_forget);
    hide();
}

void LastQueueBar::setLastQueue(LastQueue* lastQueue) {
    m_lastQueue = lastQueue;
    connect(m_continue, &QPushButton::clicked, lastQueue, &LastQueue::continueQueue);
    connect(m_forget, &QPushButton::clicked, lastQueue, &LastQueue::forget);
    connect(lastQueue, &LastQueue::changed, this, &LastQueueBar::refresh);
    refresh();
}

void LastQueueBar::refresh() {
    const int count = m_lastQueue->count();
    if (count == 0) {
        const QWidget* focus = window()->focusWidget();
        const bool hadFocus = focus && isAncestorOf(focus);
        hide();
        if (hadFocus) Q_EMIT focusReleased();
        return;
    }
    const QString text = tr("%n movie(s) from last time", nullptr, count);
    m_label->setText(text);
    setAccessibleName(text);
    m_continue->setAccessibleDescription(text);
    m_forget->setAccessibleDescription(text);
    show();
    // A screen reader says it once, without taking the focus away.
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void LastQueueBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(QRect(0, height() - 1, width(), 1), colors::hairline(palette()));
}
