#include "support/reports/CrashReport.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/LastLines.h"
#include "support/reports/CrashLogs.h"

#include <QFile>

#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

// In a crash, the heap, locks and Qt are unreliable: the handler uses only static memory and system calls.

namespace {

struct Crash {
    int signal;
    const char* name;
};
constexpr std::array kCrashes{Crash{SIGSEGV, "SIGSEGV"}, Crash{SIGBUS, "SIGBUS"},
                              Crash{SIGILL, "SIGILL"},   Crash{SIGFPE, "SIGFPE"},
                              Crash{SIGABRT, "SIGABRT"}, Crash{SIGTRAP, "SIGTRAP"}};

constexpr unsigned kPatienceSeconds = 10;

/// Text of limited length; longer text is truncated.
class FixedText {
public:
    FixedText& add(const char* text) {
        const size_t count = std::min(std::strlen(text), m_text.size() - 1 - m_size);
        std::memcpy(m_text.data() + m_size, text, count);
        m_size += count;
        m_text[m_size] = '\0';
        return *this;
    }
    FixedText& add(long long number, int digits = 1) {
        std::array<char, 24> text{};
        const auto end = std::to_chars(text.begin(), text.end() - 1, number).ptr;
        for (auto missing = digits - (end - text.begin()); missing > 0; --missing)
            add("0");
        return add(text.data());
    }
    FixedText& addAddress(const void* address) {
        std::array<char, 24> text{'0', 'x'};
        std::to_chars(text.begin() + 2, text.end() - 1, reinterpret_cast<uintptr_t>(address), 16);
        return add(text.data());
    }

    char* data() { return m_text.data(); }
    size_t size() const { return m_size; }

private:
    std::array<char, PATH_MAX> m_text{};
    size_t m_size = 0;
};

// Prepared before a crash.
FixedText theFolder;  ///< Ends with a slash.
FixedText thePrefix;  ///< Prefix of the file's name.
FixedText theHead;    ///< First lines of the report.
long theSecondsEastOfGreenwich = 0;
std::array<struct sigaction, kCrashes.size()> theFormerActions;

// Buffers of the handler; static, because the alternate stack is small.
FixedText thePath;
FixedText theReport;
alignas(16) std::array<char, 65536> theStack;

std::atomic<pid_t> theCrashedThread = 0;

/// "2026-11-21", `between`, then hour, minute and second with `colon` between them.
void addTime(FixedText& text, const char* between, const char* colon) {
    using namespace std::chrono;
    const sys_seconds now{seconds{::time(nullptr) + theSecondsEastOfGreenwich}};
    const auto day = floor<days>(now);
    const year_month_day date{day};
    const hh_mm_ss clock{now - day};
    text.add(static_cast<int>(date.year())).add("-");
    text.add(static_cast<unsigned>(date.month()), 2).add("-").add(static_cast<unsigned>(date.day()), 2);
    text.add(between).add(clock.hours().count(), 2).add(colon).add(clock.minutes().count(), 2);
    text.add(colon).add(clock.seconds().count(), 2);
}

/// Returns the descriptor, or -1.
int createFile() {
    for (char* at = theFolder.data() + 1; *at; ++at) {
        if (*at != '/') continue;
        *at = '\0';
        ::mkdir(theFolder.data(), 0700);
        *at = '/';
    }
    thePath.add(theFolder.data()).add(thePrefix.data());
    addTime(thePath, "-", "");
    thePath.add("_").add(::getpid()).add(".crash");
    return ::open(thePath.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
}

void addCrash(int signal, const siginfo_t& information) {
    theReport.add("Signal: ");
    for (const Crash& crash : kCrashes) {
        if (crash.signal == signal) theReport.add(crash.name);
    }
    theReport.add(" (").add(signal).add("), code ").add(information.si_code).add("\n");
    if (information.si_code > 0) {
        theReport.add("Address: ").addAddress(information.si_addr).add("\n");
    } else {
        theReport.add("Sent by process: ").add(information.si_pid).add("\n");
    }
}

void writeReport(int signal, const siginfo_t& information) {
    const int file = createFile();
    if (file < 0) return;
    theReport.add(theHead.data()).add("Process: ").add(::getpid()).add("\nThread: ").add(::gettid());
    theReport.add("\nTime: ");
    addTime(theReport, " ", ":");
    utsname system{};
    if (::uname(&system) == 0) theReport.add("\nSystem: ").add(system.sysname).add(" ").add(system.release);
    theReport.add(" ").add(system.machine).add("\n");
    addCrash(signal, information);
    theReport.add("\nLast messages:\n");
    // Write this first: unwinding a damaged stack may end the process.
    [[maybe_unused]] auto written = ::write(file, theReport.data(), theReport.size());
    lastlines::write(file);
    constexpr std::string_view kTitle = "\nBack-trace:\n";
    written = ::write(file, kTitle.data(), kTitle.size());
    constexpr int kMaximumFrames = 128;
    std::array<void*, kMaximumFrames> frames{};
    ::backtrace_symbols_fd(frames.data(), ::backtrace(frames.data(), kMaximumFrames), file);
    ::close(file);
}

/// Restores the signal handlers from before install().
void restoreFormerHandlers() {
    for (size_t i = 0; i < kCrashes.size(); ++i)
        ::sigaction(kCrashes[i].signal, &theFormerActions[i], nullptr);
}

void onCrash(int signal, siginfo_t* information, void*) {
    pid_t crashed = 0;
    const bool isFirst = theCrashedThread.compare_exchange_strong(crashed, ::gettid());
    while (!isFirst && crashed != ::gettid())
        ::pause();  // Wait for the thread that crashed first: it ends the process after its report.
    if (isFirst) {
        // Looking up function names takes a lock, which the crash may have left locked: the alarm ends a
        // deadlock.
        std::signal(SIGALRM, SIG_DFL);
        ::alarm(kPatienceSeconds);
        writeReport(signal, *information);
        ::alarm(0);
    }
    restoreFormerHandlers();
    // The signal stays blocked until this returns to the place of the crash, so that a core dump shows that
    // place.
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::gettid(), signal, information) != 0) ::raise(signal);
}

QString programPath() {
    return QFile::symLinkTarget("/proc/self/exe");
}

long secondsEastOfGreenwich() {
    const time_t now = ::time(nullptr);
    tm local{};
    return ::localtime_r(&now, &local) ? local.tm_gmtoff : 0;
}

/// Keeps an existing alternate stack.
void installAlternateStack() {
    stack_t stack{};
    if (::sigaltstack(nullptr, &stack) != 0 || (stack.ss_flags & SS_DISABLE) == 0) return;
    stack = {};
    stack.ss_sp = theStack.data();
    stack.ss_size = theStack.size();
    ::sigaltstack(&stack, nullptr);
}

}  // namespace

void crashreport::install() {
    theFolder.add(QFile::encodeName(crashlogs::ownFolder()).constData()).add("/");
    thePrefix.add(QFile::encodeName(ApplicationInfo::name()).constData()).add("_");
    theHead.add(makeString("Application: %@\nVersion: %@ (%i)\nProgram: %@\n", ApplicationInfo::name(),
                           ApplicationInfo::version(), ApplicationInfo::buildNumber(), programPath())
                    .toUtf8()
                    .constData());
    theSecondsEastOfGreenwich = secondsEastOfGreenwich();
    void* frame = nullptr;
    ::backtrace(&frame, 1);  // The first call loads the unwinder library.
    installAlternateStack();
    struct sigaction action = {};
    action.sa_sigaction = onCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigfillset(&action.sa_mask);  // A crash inside the handler ends the process at once.
    ::sigdelset(&action.sa_mask, SIGALRM);
    for (size_t i = 0; i < kCrashes.size(); ++i)
        ::sigaction(kCrashes[i].signal, &action, &theFormerActions[i]);
}
