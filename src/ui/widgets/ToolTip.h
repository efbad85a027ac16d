#pragma once

#include <QString>

/// The text as a tool tip: names of files may look like markup.
inline QString plainToolTip(const QString& text) {
    return text.isEmpty() ? QString() : "<qt>" + text.toHtmlEscaped().replace(u'\n', "<br>") + "</qt>";
}
