#include "richtext/HtmlText.h"

namespace richtext {

namespace {

bool isLeftOut(char16_t c) {
    const bool isControl = (c < 0x20 && c != u'\t') || (c >= 0x7F && c < 0xA0);
    const bool isNoCharacter = (c >= 0xFDD0 && c <= 0xFDEF) || c >= 0xFFFE;
    return isControl || isNoCharacter || c == QChar::ObjectReplacementCharacter || c == u'\u2029';
}

}  // namespace

void appendEscaped(QString& html, QStringView text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            html.append(text.sliced(i++, 2));
            continue;
        }
        switch (c.unicode()) {
            case u'&':
                html.append(u"&amp;");
                break;
            case u'<':
                html.append(u"&lt;");
                break;
            case u'>':
                html.append(u"&gt;");
                break;
            case u'"':
                html.append(u"&quot;");
                break;
            case QChar::LineSeparator:
                html.append(u"<br/>");
                break;
            default:
                if (c.isSurrogate())
                    html.append(QChar::ReplacementCharacter);
                else if (!isLeftOut(c.unicode()))
                    html.append(c);
        }
    }
}

}  // namespace richtext
