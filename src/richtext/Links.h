#pragma once

#include <QString>

namespace richtext {

/// The encoded address in a field instruction (`HYPERLINK "http://example.com"`). Empty if there is none or
/// its scheme is not allowed, such as a script. Callable from any thread.
QString linkOfInstruction(const QString& instruction);

}  // namespace richtext
