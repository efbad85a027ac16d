#include "ui/window/WindowWatch.h"

#include "app/OpenWindows.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace {

bool isForPeople(const QWidget& window) {
    return window.windowType() == Qt::Window || window.windowType() == Qt::Dialog ||
           window.windowType() == Qt::Tool;
}

}  // namespace

WindowWatch::WindowWatch(OpenWindows& windows, const QWidget& mainWindow)
    : m_windows(windows), m_mainWindow(mainWindow) {
    qApp->installEventFilter(this);
}

bool WindowWatch::eventFilter(QObject* watched, QEvent* event) {
    if ((event->type() == QEvent::Show || event->type() == QEvent::Hide) && watched->isWidgetType() &&
        static_cast<const QWidget*>(watched)->isWindow() && !std::exchange(m_isDue, true)) {
        // One window may take the place of another.
        QMetaObject::invokeMethod(this, &WindowWatch::report, Qt::QueuedConnection);
    }
    return false;
}

void WindowWatch::report() {
    m_isDue = false;
    const QWidgetList all = QApplication::topLevelWidgets();
    const bool areOthersOpen = std::ranges::any_of(all, [this](const QWidget* window) {
        return window != &m_mainWindow && window->isVisible() && isForPeople(*window);
    });
    m_windows.set(m_mainWindow.isVisible(), areOthersOpen);
}
