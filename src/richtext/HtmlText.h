#pragma once

#include <QString>

namespace richtext {

/// Appends `text` as it stands between tags or in an attribute: halves of characters replaced, without the
/// characters that XML forbids and those that QTextDocument takes for marks of its own.
void appendEscaped(QString& html, QStringView text);

}  // namespace richtext
