#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringDecoder>

#include <map>

namespace richtext {

constexpr int kWesternCodePage = 1252;
/// Of fonts that show signs where others have letters; of these only bullets are known.
constexpr int kSymbolCodePage = 42;

/// The code page of a font by its character set; `ofDocument` where the font does not decide.
int codePageOfCharset(int charset, int ofDocument);

/// Turns bytes in Windows' code pages into text. What they do not define becomes U+FFFD or a control
/// character; a code page that is not known is taken for the western one.
class CodePages {
public:
    QString decode(QByteArrayView bytes, int codePage);

private:
    std::map<int, QStringDecoder> m_decoders;  ///< Costly to make, and rich text changes often.
};

}  // namespace richtext
