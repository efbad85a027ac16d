#pragma once

#include <QString>

/// The text as a tool tip. It is escaped, since file names may look like markup. Any thread.
inline QString plainToolTip(const QString& text) {
    return text.isEmpty() ? QString() : "<qt>" + text.toHtmlEscaped().replace(u'\n', "<br>") + "</qt>";
}
