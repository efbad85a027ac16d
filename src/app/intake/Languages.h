#pragma once

#include <QStringList>

/// The user's languages as the tool's reports write them.
namespace languages {

/// The three-letter code (ISO 639-2, bibliographic: "ger", "fre") of each identifier such as "de-AT", in
/// order: of the whole identifier if it is a code, else of its language; an identifier that is in no table
/// stays as it is.
QStringList threeLetterCodes(const QStringList& identifiers);

/// The language codes alone, such as "de".
QStringList twoLetterCodes(const QStringList& identifiers);

/// For the languages that the user prefers, in the user's order.
QStringList preferredLanguages3Letter();
/// Computed once.
const QStringList& preferredLanguages2Letter();

}  // namespace languages
