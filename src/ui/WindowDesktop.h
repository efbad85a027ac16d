#pragma once

#include "support/desktop/DBusDesktop.h"

/// The desktop with what a window has of it: the clipboard and the keyboard. Needs the QGuiApplication.
class WindowDesktop : public DBusDesktop {
    Q_OBJECT

public:
    using DBusDesktop::DBusDesktop;

    /// Stays as long as the application runs, longer where the desktop keeps it.
    bool copyToClipboard(const QString& text) override;
    bool isOptionKeyHeld() const override;
};
