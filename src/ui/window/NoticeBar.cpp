#include "ui/window/NoticeBar.h"

#include "ui/look/Accessibility.h"
#include "ui/look/Colors.h"
#include "ui/widgets/ElidedLabel.h"
#include "ui/widgets/FlatButton.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

NoticeBar::NoticeBar(QWidget* parent) : QWidget(parent) {
    constexpr int kMargin = 16;
    constexpr int kGap = 8;
    constexpr int kSmallGap = 6;
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    accessibility::setRole(*this, QAccessible::Grouping);
    m_label = new ElidedLabel(this);
    m_proposed = new QPushButton(this);
    m_proposed->setAutoDefault(true);
    m_other = new FlatButton(this);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, kSmallGap, kMargin, kSmallGap + 1);
    layout->setSpacing(kGap);
    layout->addWidget(m_label, 1);
    layout->addWidget(m_other);
    layout->addSpacing(kGap);
    layout->addWidget(m_proposed);
    setTabOrder(m_proposed, m_other);
    hide();
}

void NoticeBar::announce(const QString& text) {
    setText(text);
    setAccessibleName(text);
    m_proposed->setAccessibleDescription(text);
    m_other->setAccessibleDescription(text);
    show();
    accessibility::announce(*this, text);
}

void NoticeBar::setText(const QString& text) {
    m_label->setText(text);
}

void NoticeBar::conceal() {
    const QWidget* focus = window()->focusWidget();
    const bool hadFocus = focus && isAncestorOf(focus);
    hide();
    if (hadFocus) Q_EMIT focusReleased();
}

void NoticeBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(QRect(0, height() - 1, width(), 1), colors::hairline(palette()));
}
