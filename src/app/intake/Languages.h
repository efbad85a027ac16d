#pragma once

#include <QStringList>

/// The user's languages in the notation of the tool's reports. Any thread.
namespace languages {

/// The three-letter code (ISO 639-2, bibliographic: "ger", "fre") for each identifier such as "de-AT", in
/// order: the code of the whole identifier if it has one, else that of its language. An unknown identifier
/// stays as it is.
QStringList threeLetterCodes(const QStringList& identifiers);

/// Only the language parts of the identifiers, such as "de".
QStringList twoLetterCodes(const QStringList& identifiers);

/// Codes of the user's preferred languages, in the user's order.
QStringList preferredLanguages3Letter();
/// Computed once.
const QStringList& preferredLanguages2Letter();

}  // namespace languages
