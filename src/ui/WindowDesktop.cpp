#include "ui/WindowDesktop.h"

#include <QClipboard>
#include <QGuiApplication>

bool WindowDesktop::copyToClipboard(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
    return true;
}

bool WindowDesktop::isOptionKeyHeld() const {
    // What the keyboard says now: by the time a menu's command runs, the events of its keys are over.
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::AltModifier);
}
