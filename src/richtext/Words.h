#pragma once

#include <QByteArrayView>

namespace richtext {

/// What a control word means to the reader.
enum class Meaning : quint8 {
    Unknown,
    Character,  ///< Stands for `Word::character`.
    Unicode,
    FallbackLength,
    EndOfParagraph,
    // Destinations: where the text of a group goes.
    Skipped,
    FontTable,
    ColorTable,
    Field,
    FieldInstruction,
    FieldResult,
    Label,
    // The document
    CodePage,  ///< `Word::character` is the code page, or 0: the parameter is.
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

/// The control word of this name, which is told without its backslash.
Word wordNamed(QByteArrayView name);

}  // namespace richtext
