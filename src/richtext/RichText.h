#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Reads the rich text of word processors (RTF) and tells it as HTML: paragraphs with alignment, indentation
/// and bullets; bold, italic, underline, size, colour, monospaced fonts; links. Letters come by Unicode
/// escapes or in any usual code page. Pictures, tables' frames, headers, notes and everything unknown are
/// left out. Callable from any thread.
namespace richtext {

struct TextStyle {
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isMonospaced = false;
    int halfPoints = 24;           ///< 8 to 144
    std::optional<quint32> color;  ///< 0xRRGGBB; nothing: the colour that text has where it is shown.
    int link = -1;                 ///< Index into Document::links; -1: none.

    bool operator==(const TextStyle&) const = default;
};

/// Text of one style. U+2028 breaks the line, a tab is a tab.
struct Run {
    QString text;
    TextStyle style;
};

enum class Alignment { Left, Center, Right, Justified };

/// Lengths are in twips, of which 20 are a point; none reaches out of the page.
struct ParagraphStyle {
    Alignment alignment = Alignment::Left;
    int indent = 0;
    int firstLineIndent = 0;  ///< Added to `indent`; negative: the first line hangs out.
    int spaceBefore = 0;
    int spaceAfter = 0;
};

struct Paragraph {
    ParagraphStyle style;
    bool isListItem = false;  ///< Has a bullet, which is not in its text.
    QList<Run> runs;
};

struct Document {
    QList<Paragraph> paragraphs;
    QStringList
        links;  ///< Encoded addresses: http, https, mailto, file, or relative. Nothing else is a link.
};

/// Nothing when the bytes are no rich text. Whatever else they are, this reads what can be read, in time and
/// memory in proportion to their number: it neither fails nor recurses, however the bytes are truncated or
/// nested. Texts hold what the bytes say, control characters included; toHtml() leaves these out.
std::optional<Document> read(QByteArrayView rtf);

/// How the place where a document is shown looks.
struct HtmlLook {
    double bodyPoints = 0;              ///< The size that the document's ordinary text gets; 0: its own.
    std::optional<quint32> background;  ///< 0xRRGGBB; colours that cannot be read on it are left out.
};

/// The document as a page that is well-formed XML, too. The ordinary text, which is the size that most of it
/// has, names no size, and links name no colour, so that both are as they are elsewhere in the application.
QString toHtml(const Document& document, const HtmlLook& look = {});

}  // namespace richtext
