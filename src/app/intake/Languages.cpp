#include "app/intake/Languages.h"

#include "support/base/Collections.h"

#include <QLocale>

namespace languages {

namespace {

QString threeLetterCode(const QString& twoLetterCode) {
    const QLocale::Language language = QLocale::codeToLanguage(twoLetterCode, QLocale::ISO639Part1);
    return language == QLocale::AnyLanguage ? QString()
                                            : QLocale::languageToCode(language, QLocale::ISO639Part2B);
}

QString languageCode(const QString& identifier) {
    const qsizetype end = identifier.indexOf(u'-');
    const qsizetype other = identifier.indexOf(u'_');
    return identifier.left(end < 0 ? other : end);
}

}  // namespace

QStringList threeLetterCodes(const QStringList& identifiers) {
    QStringList codes;
    for (const QString& identifier : identifiers) {
        QString code = threeLetterCode(identifier);
        if (code.isEmpty()) code = threeLetterCode(languageCode(identifier));
        codes.append(code.isEmpty() ? identifier : code);
    }
    return codes;
}

QStringList twoLetterCodes(const QStringList& identifiers) {
    QStringList codes;
    for (const QString& identifier : identifiers)
        codes.append(languageCode(identifier));
    return codes;
}

QStringList preferredLanguages3Letter() {
    // The system names each language in several ways, such as "de", "de-DE" and "de-Latn-DE".
    return collections::withoutDuplicates(threeLetterCodes(QLocale::system().uiLanguages()));
}

const QStringList& preferredLanguages2Letter() {
    static const QStringList codes = twoLetterCodes(QLocale::system().uiLanguages());
    return codes;
}

}  // namespace languages
