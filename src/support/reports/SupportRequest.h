#pragma once

#include <QString>

#include <functional>

/// What a request to support says, and which pages the maker's menu opens; both as texts made from texts.
namespace supportrequest {

/// What a request tells of the machine it comes from.
struct Machine {
    QString type;
    QString architecture;
    QString system;
    bool isAdmin = false;
    QString checksums;
};

/// Whether the program is built for ARM, is translated for it while it runs, or is at home on Intel.
QString architecture(bool isBuiltForArm, bool isTranslated);

/// `attachment` is the last thing in it; empty: none.
QString body(const QString& text, const Machine& machine, const QString& attachment);

/// What choices 2 to 6 open, unescaped; empty where there is nothing to open. `information` gives the text
/// under a key of the application's information file, empty where it has none.
QString address(int choice, const QString& appName, const QString& supportAddress,
                const std::function<QString(const char* key)>& information);

/// Opens a mail to support that begins with `text` and describes the machine. With the Option key held, the
/// settings go with it. Main thread only.
void send(const QString& text);
/// Opens what a choice of the maker's menu stands for: 1 a request, else address(). Nothing where there is no
/// such page. Main thread only.
void openPage(int choice);

}  // namespace supportrequest
