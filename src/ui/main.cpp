#include "support/base/Utf8Locale.h"
#include "support/reports/CrashReport.h"
#include "ui/Application.h"

int main(int argc, char** argv) {
    makeSureOfUtf8();
    crashreport::install();
    return runApplication(argc, argv);
}
