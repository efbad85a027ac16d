#pragma once

#include <QString>

#include <functional>

/// Composes requests to support and the addresses of the vendor's menu.
namespace supportrequest {

/// The machine as described in a request.
struct Machine {
    QString type;
    QString architecture;
    QString system;
    bool isAdmin = false;
    QString checksums;
};

/// The architecture's name: built for ARM, translated for ARM while it runs, or native on Intel. Callable
/// from any thread.
QString architecture(bool isBuiltForArm, bool isTranslated);

/// The body of a request, which ends with `attachment`; empty: none. Callable from any thread.
QString body(const QString& text, const Machine& machine, const QString& attachment);

/// The unescaped address for choices 2 to 6; empty if there is none. `information` returns the value of a key
/// in the application's information file, or an empty text. Callable from any thread.
QString address(int choice, const QString& appName, const QString& supportAddress,
                const std::function<QString(const char* key)>& information);

/// Opens a mail to support that begins with `text` and describes the machine. If the Option key is held, the
/// settings are included. Main thread only.
void send(const QString& text);
/// Opens a choice of the vendor's menu: 1 a request, else address(). Does nothing if there is no such page.
/// Main thread only.
void openPage(int choice);

}  // namespace supportrequest
