#pragma once

#include <QByteArrayView>

namespace richtext {

/// The meaning of a control word.
enum class Meaning : quint8 {
    Unknown,
    Character,  ///< Stands for `Word::character`.
    Unicode,
    FallbackLength,
    EndOfParagraph,
    // Destinations of the text of a group
    Skipped,
    FontTable,
    ColorTable,
    Field,
    FieldInstruction,
    FieldResult,
    Label,
    // The document
    CodePage,  ///< `Word::character` is the code page; if 0, the parameter is.
    DefaultFont,
    // The tables
    FontIsMonospaced,
    FontCharset,
    FontCodePage,
    Red,
    Green,
    Blue,
    // Text
    Font,
    PlainText,
    Bold,
    Italic,
    Underline,
    NoUnderline,
    Hidden,
    Size,
    Color,
    // Paragraphs
    PlainParagraph,
    AlignLeft,
    AlignCenter,
    AlignRight,
    AlignJustified,
    Indent,
    FirstLineIndent,
    SpaceBefore,
    SpaceAfter,
};

struct Word {
    Meaning meaning = Meaning::Unknown;
    char16_t character = 0;
};

/// Looks up a control word by its name without the backslash. Callable from any thread.
Word wordNamed(QByteArrayView name);

}  // namespace richtext
