#include "ui/WindowDesktop.h"

#include <QClipboard>
#include <QGuiApplication>

bool WindowDesktop::copyToClipboard(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
    return true;
}

bool WindowDesktop::isOptionKeyHeld() const {
    // The current state of the keyboard: when the command of a menu runs, its key events have been processed.
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::AltModifier);
}
