#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Converts the rich text of word processors (RTF) to HTML: paragraphs with alignment, indentation and
/// bullets; bold, italic, underline, size, colour, monospaced fonts; links. Supports Unicode escapes and the
/// usual code pages. Omits pictures, table borders, headers, notes and everything unknown. Callable from any
/// thread.
namespace richtext {

struct TextStyle {
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isMonospaced = false;
    int halfPoints = 24;           ///< 8 to 144
    std::optional<quint32> color;  ///< 0xRRGGBB; null: the default text colour.
    int link = -1;                 ///< Index into Document::links; -1: none.

    bool operator==(const TextStyle&) const = default;
};

/// Text of one style. U+2028 is a line break; tabs are kept.
struct Run {
    QString text;
    TextStyle style;
};

enum class Alignment { Left, Center, Right, Justified };

/// Lengths are in twips (1/20 point), limited to the page.
struct ParagraphStyle {
    Alignment alignment = Alignment::Left;
    int indent = 0;
    int firstLineIndent = 0;  ///< Added to `indent`; negative: hanging indent.
    int spaceBefore = 0;
    int spaceAfter = 0;
};

struct Paragraph {
    ParagraphStyle style;
    bool isListItem = false;  ///< Has a bullet, which is not part of the runs.
    QList<Run> runs;
};

struct Document {
    QList<Paragraph> paragraphs;
    QStringList
        links;  ///< Encoded addresses: http, https, mailto, file, or relative. Nothing else is a link.
};

/// Parses RTF; null if the bytes do not begin as rich text. Truncated or deeply nested input is read as far
/// as possible, without recursion, in time and memory proportional to its size. Texts may contain control
/// characters, which toHtml() removes.
std::optional<Document> read(QByteArrayView rtf);

/// The appearance of the view that shows a document.
struct HtmlLook {
    double bodyPoints = 0;              ///< The size in points for the document's body text; 0: its own size.
    std::optional<quint32> background;  ///< 0xRRGGBB; text colours that are unreadable on it are omitted.
};

/// Returns the document as an HTML page that is also well-formed XML. Body text (of the most frequent size)
/// gets no size and links get no colour, so that both look as elsewhere in the application.
QString toHtml(const Document& document, const HtmlLook& look = {});

}  // namespace richtext
