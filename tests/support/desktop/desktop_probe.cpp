// Executes commands from standard input, one per line, on the desktop, and prints the replies on standard
// output:
//     inhibit | release | notify TITLE|TEXT|ACTION|PATH|GROUP|QUIT | withdraw GROUP | reveal PATH|PATH | open
//     URL | trash PATH | transfer KEY | background REASON | can sleep | can power-off | sleep | power-off |
//     progress FRACTION | progress | appearance | settle | quit
#include "support/desktop/Buses.h"
#include "support/desktop/DBusDesktop.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);  // So that it reports the remaining input.
    const QCoreApplication application(argc, argv);
    DBusDesktop desktop("Ravelin", "example.ravelin.Ravelin", application.arguments().contains("--flatpak"));
    QObject::connect(&desktop, &Desktop::notificationActivated,
                     [](const QString& path, const QString& token) {
                         std::printf("activated %s\n", qPrintable((path + u' ' + token).trimmed()));
                         std::fflush(stdout);
                     });
    QObject::connect(&desktop, &Desktop::quitActivated, [](const QString& token) {
        std::printf("quit activated %s\n", qPrintable(token));
        std::fflush(stdout);
    });
    QObject::connect(&desktop, &Desktop::appearanceChanged, [&desktop] {
        std::printf("%s, %s\n", desktop.prefersDark() ? "dark" : "light",
                    desktop.prefersReducedMotion() ? "still" : "moving");
        std::fflush(stdout);
    });
    quint32 assertion = 0;
    const QSocketNotifier input(0, QSocketNotifier::Read);
    const auto obey = [&](const std::string& text) {
        const QString line = QString::fromStdString(text);
        const QString command = line.section(u' ', 0, 0);
        const QString rest = line.section(u' ', 1);
        if (command == "inhibit") assertion = desktop.acquireSleepAssertion("Converting MKV file.");
        if (command == "release") desktop.releaseSleepAssertion(assertion);
        if (command == "notify")
            desktop.notify({rest.section(u'|', 0, 0), rest.section(u'|', 1, 1), rest.section(u'|', 2, 2),
                            rest.section(u'|', 3, 3), rest.section(u'|', 4, 4),
                            !rest.section(u'|', 4, 4).isEmpty(), rest.section(u'|', 5)});
        const auto action = line.endsWith("sleep") ? PowerAction::Sleep : PowerAction::ShutDown;
        if (command == "can")
            desktop.askWhetherAllowed(action, &desktop, [](bool isAllowed) {
                std::printf("%s\n", isAllowed ? "allowed" : "denied");
                std::fflush(stdout);
            });
        if (command == "sleep" || command == "power-off")
            desktop.carryOut(action, &desktop, [](const QString& error) {
                std::printf("carried out %s\n", qPrintable(error));
                std::fflush(stdout);
            });
        if (command == "withdraw") desktop.withdraw(rest);
        if (command == "reveal") desktop.revealTogether(rest.split(u'|'));
        if (command == "trash") std::printf("%s\n", desktop.moveToTrash(rest) ? "moved" : "not moved");
        if (command == "transfer") std::printf("%s\n", qPrintable(desktop.transferredFiles(rest).join(u'|')));
        if (command == "background") desktop.requestBackground(rest);
        if (command == "open") std::printf("%s\n", desktop.openUrl(QUrl(rest)) ? "opened" : "not opened");
        if (command == "progress")
            desktop.setLauncherProgress(rest.isEmpty() ? std::nullopt : std::optional(rest.toDouble()));
        if (command == "appearance") desktop.watchAppearance();
        if (command == "settle")  // What the notification service has answered before is handled by then.
            buses::session()->call(QDBusMessage::createMethodCall("org.freedesktop.Notifications",
                                                                  "/org/freedesktop/Notifications",
                                                                  "org.freedesktop.DBus.Peer", "Ping"),
                                   QDBus::BlockWithGui);
        std::printf("did %s\n", qPrintable(command));
        std::fflush(stdout);
        if (command == "quit") QCoreApplication::quit();
    };
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        std::string text;
        do {  // Reads lines that arrived together at once.
            if (!std::getline(std::cin, text)) return QCoreApplication::quit();
            obey(text);
        } while (std::cin.rdbuf()->in_avail() > 0);
    });
    return QCoreApplication::exec();
}
