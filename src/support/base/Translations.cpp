#include "support/base/Translations.h"

#include "support/base/ApplicationInfo.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace {

void install(std::unique_ptr<QTranslator> translator) {
    translator->setParent(QCoreApplication::instance());
    QCoreApplication::installTranslator(translator.release());
}

}  // namespace

void installTranslations() {
    const QString folder = ApplicationInfo::resourceFolder() + "/translations";
    auto ours = std::make_unique<QTranslator>();
    const bool isTranslated = ours->load(QLocale(), "ravelin", "_", folder);
    if (isTranslated || ours->load("ravelin_en", folder)) install(std::move(ours));
    // Load Qt's translation only for our language, to avoid mixed languages in dialogs.
    auto qt = std::make_unique<QTranslator>();
    if (isTranslated &&
        qt->load(QLocale(), "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        install(std::move(qt));
}
