#pragma once

#include <QString>

namespace richtext {

/// The encoded address that a field's instruction (`HYPERLINK "http://example.com"`) links to. Empty when it
/// links nowhere, or to something that a text has no business to start, such as a script.
QString linkOfInstruction(const QString& instruction);

}  // namespace richtext
