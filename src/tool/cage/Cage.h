#pragma once

#include "settings/Values.h"
#include "tool/cage/Room.h"

#include <QString>

class QProcess;

/// The restrictions under which the tool reads a movie: a hostile movie may make it do anything, so it can
/// reach nothing but that movie and its output. docs/security.md lists what is promised. Any thread.
namespace cage {

/// What this system has, as the kernel says when it is asked first. Whoever demands the whole cage relies on
/// entering it: a strict child that lacks a part does not start the tool.
struct Parts {
    bool files = false;        ///< Landlock.
    bool network = false;      ///< No sockets; Landlock alone would deny TCP.
    bool systemCalls = false;  ///< The filter of system calls.

    bool isWhole() const { return files && network && systemCalls; }
};
const Parts& available();

/// "files, network, system calls", as far as available; "none". For the user.
QString description();

/// Why nothing may be started, for the user; empty: it may.
QString refusal(CageMode mode);

/// Makes the rules of `process`, whose program, arguments and environment are set and which was prepared with
/// childprocess::prepare(). What is not available is logged once.
void enclose(QProcess& process, const Room& room, CageMode mode);

}  // namespace cage
