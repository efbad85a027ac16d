#include "ui/help/QuietMoment.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <utility>

namespace {

bool isTouchedBy(QEvent::Type type) {
    switch (type) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::InputMethod:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TabletPress:
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::DragLeave:
        case QEvent::Drop:
            return true;
        default:
            return false;
    }
}

}  // namespace

QuietMoment::QuietMoment(QWidget* window, int quietMilliseconds) : QObject(window), m_window(window) {
    m_timer.setSingleShot(true);
    m_timer.setInterval(quietMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &QuietMoment::onQuiet);
}

void QuietMoment::wait(std::function<void()> action) {
    m_action = std::move(action);
    qApp->installEventFilter(this);
    m_timer.start();
}

bool QuietMoment::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    const bool appears = watched == m_window && (type == QEvent::Show || type == QEvent::WindowStateChange);
    if (isTouchedBy(type) || appears || type == QEvent::WindowUnblocked) m_timer.start();
    return QObject::eventFilter(watched, event);
}

bool QuietMoment::isQuiet() const {
    return !(m_isBusy && m_isBusy()) && !QApplication::activeModalWidget() &&
           !QApplication::activePopupWidget() && QApplication::mouseButtons() == Qt::NoButton;
}

void QuietMoment::onQuiet() {
    // A hidden window reports when it is shown: no polling is needed.
    if (!m_window || !m_window->isVisible() || m_window->isMinimized()) return;
    if (!isQuiet()) {
        m_timer.start();
        return;
    }
    qApp->removeEventFilter(this);
    if (const auto action = std::exchange(m_action, nullptr)) action();
}
