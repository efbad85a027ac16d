#pragma once

#include <QObject>

class OpenWindows;
class QWidget;

/// Reports which windows of the application are open; tool tips, menus and the like are none. Main thread
/// only.
class WindowWatch : public QObject {
    Q_OBJECT

public:
    /// Both must outlive this object.
    WindowWatch(OpenWindows& windows, const QWidget& mainWindow);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void report();

    OpenWindows& m_windows;
    const QWidget& m_mainWindow;
    bool m_isDue = false;
};
