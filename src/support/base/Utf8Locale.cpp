#include "support/base/Utf8Locale.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>

void makeSureOfUtf8() {
    std::setlocale(LC_ALL, "");
    if (std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0) return;
    if (const char* all = std::getenv("LC_ALL"); all && *all) ::setenv("LANG", all, 1);
    ::unsetenv("LC_ALL");
    ::setenv("LC_CTYPE", "C.UTF-8", 1);
    // Where LANG names a locale that is not there, nothing of the environment would be taken.
    if (!std::setlocale(LC_ALL, "")) std::setlocale(LC_CTYPE, "C.UTF-8");
}
