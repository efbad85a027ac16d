#pragma once

#include "richtext/RichText.h"
#include "richtext/Tables.h"
#include "richtext/Tokenizer.h"
#include "richtext/Words.h"

namespace richtext {

/// How text looks that comes next; each group has its own and gives back what was before it.
struct Format {
    TextStyle text;
    ParagraphStyle paragraph;
    int font = -1;  ///< Its number; -1: the document's default.
    bool isHidden = false;
};

/// Does what a word for text or paragraphs asks for; other words change nothing. `word` has the meaning
/// `meaning`.
void apply(Meaning meaning, const Token& word, const ColorTable& colors, Format& format);

}  // namespace richtext
