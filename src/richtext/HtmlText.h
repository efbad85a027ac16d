#pragma once

#include <QString>

namespace richtext {

/// Appends `text` escaped for element contents and attributes. Replaces unpaired surrogates and removes
/// characters that XML forbids or that QTextDocument uses as its own markers. Callable from any thread.
void appendEscaped(QString& html, QStringView text);

}  // namespace richtext
