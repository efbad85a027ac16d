#include "support/reports/Exceptions.h"

#include "support/base/Format.h"
#include "support/reports/ProblemReport.h"
#include "support/store/Defaults.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <execinfo.h>

namespace {

QString demangled(const char* name) {
    int status = 0;
    char* text = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    const QString result = QString::fromUtf8(status == 0 ? text : name);
    std::free(text);
    return result;
}

QStringList callStackSymbols() {
    constexpr int kMaximumFrames = 64;
    void* frames[kMaximumFrames];
    const int count = ::backtrace(frames, kMaximumFrames);
    char** symbols = ::backtrace_symbols(frames, count);
    QStringList result;
    for (int i = 0; symbols && i < count; ++i)
        result.append(QString::fromUtf8(symbols[i]));
    std::free(static_cast<void*>(symbols));
    return result;
}

[[noreturn]] void onTerminate() {
    static bool entered = false;
    if (std::exchange(entered, true)) std::abort();  // The handler itself failed.
    QString name = "no exception";
    QString reason;
    if (const std::exception_ptr current = std::current_exception()) {
        name = demangled(abi::__cxa_current_exception_type()->name());
        try {
            std::rethrow_exception(current);
        } catch (const std::exception& exception) {
            reason = QString::fromUtf8(exception.what());
        } catch (...) {  // NOLINT(bugprone-empty-catch): only its type is known.
        }
    }
    exceptionHandler(name, reason);
}

}  // namespace

void installExceptionHandler() {
    std::set_terminate(onTerminate);
}

void exceptionHandler(const QString& name, const QString& reason) {
    constexpr int kMaximumEntries = 10;
    const QString information = makeString(" %@ %@ %@ %@", name, reason, QString("{\n}"), callStackSymbols());
    const QString date = QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat);
    qn_defaults_addtoarray("quillonlib_exception_info",
                           makeString("Date: %@ Exception:%@", date, information), kMaximumEntries);
    alert_feedback_fatal(name, information);
}
