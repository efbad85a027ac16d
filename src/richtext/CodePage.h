#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringDecoder>

#include <map>

namespace richtext {

constexpr int kWesternCodePage = 1252;
/// Code page of symbol fonts; only bullets are decoded.
constexpr int kSymbolCodePage = 42;

/// The code page for a font's character set; `ofDocument` if the character set implies none.
int codePageOfCharset(int charset, int ofDocument);

/// Decodes bytes in Windows code pages. Undefined bytes become U+FFFD or a control character; an unknown code
/// page is decoded as the western one. Each instance is for one thread.
class CodePages {
public:
    QString decode(QByteArrayView bytes, int codePage);

private:
    std::map<int, QStringDecoder> m_decoders;  ///< Cached: expensive to create, and rich text switches often.
};

}  // namespace richtext
