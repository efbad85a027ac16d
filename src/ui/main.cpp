#include "support/CrashReport.h"
#include "support/Utf8Locale.h"
#include "ui/Application.h"

int main(int argc, char** argv) {
    makeSureOfUtf8();
    crashreport::install();
    return runApplication(argc, argv);
}
