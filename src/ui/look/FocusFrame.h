#pragma once

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

/// A text view that shows the keyboard focus by a frame. Qt's own ones show it by their cursor alone, which
/// those that cannot be edited do not have. `View` is a QAbstractScrollArea. Main thread only.
template <typename View>
class FocusFramed : public View {
public:
    using View::View;

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) this->viewport()->update();
        return View::event(event);
    }

    void paintEvent(QPaintEvent* event) override {
        View::paintEvent(event);
        if (!this->hasFocus()) return;
        QPainter painter(this->viewport());
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        frame.rect = this->viewport()->rect();
        this->style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
    }
};
