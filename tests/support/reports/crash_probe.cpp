// Crashes as given by its argument: null, division, abort, overflow, thread. Does not crash for any other.
#include "support/base/LastLines.h"
#include "support/reports/CrashReport.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

volatile int theNumber = 0;

void crashAtAddress() {
    // An invalid address. Not null itself, which sanitizers detect before the access.
    *reinterpret_cast<volatile int*>(theNumber + 16) = 1;
}

__attribute__((no_sanitize("undefined"))) void crashByDivision() {
    theNumber = 1000 / theNumber;
    std::raise(SIGFPE);  // Not every processor traps.
}

int crashByOverflow(int depth) {  // NOLINT(misc-no-recursion)
    volatile char frame[4096];
    frame[0] = 1;
    if (depth < theNumber) return 0;  // Never true.
    return crashByOverflow(depth + 1) + frame[0];
}

}  // namespace

int main(int, char** argv) {
    crashreport::install();
    for (int i = 0; i < 11; ++i)
        lastlines::add(i % 8, QString("message\n%1").arg(i));
    lastlines::add(3, QString(u'ü').repeated(600));
    const auto is = [&](const char* way) { return std::strcmp(argv[1], way) == 0; };
    if (is("null")) crashAtAddress();
    if (is("division")) crashByDivision();
    if (is("abort")) std::abort();
    if (is("overflow")) crashByOverflow(theNumber);
    if (is("thread")) std::thread(crashAtAddress).join();
    return 0;
}
