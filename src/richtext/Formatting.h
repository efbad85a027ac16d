#pragma once

#include "richtext/RichText.h"
#include "richtext/Tables.h"
#include "richtext/Tokenizer.h"
#include "richtext/Words.h"

namespace richtext {

/// The format of the following text; each group has its own, and its end restores the previous one.
struct Format {
    TextStyle text;
    ParagraphStyle paragraph;
    int font = -1;  ///< Font number; -1: the document's default.
    bool isHidden = false;
};

/// Applies the control word `word`, whose meaning is `meaning`; ignores words that do not format text or
/// paragraphs. Callable from any thread.
void apply(Meaning meaning, const Token& word, const ColorTable& colors, Format& format);

}  // namespace richtext
