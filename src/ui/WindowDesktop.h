#pragma once

#include "support/desktop/DBusDesktop.h"

/// The desktop services that need a window system: the clipboard and the keyboard. Needs the QGuiApplication.
/// Main thread only.
class WindowDesktop : public DBusDesktop {
    Q_OBJECT

public:
    using DBusDesktop::DBusDesktop;

    /// The text stays available while the application runs, longer if the desktop keeps it.
    bool copyToClipboard(const QString& text) override;
    bool isOptionKeyHeld() const override;
};
