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

/// Does what `word` asks for, which means `meaning`; words that are not for text or paragraphs change
/// nothing.
void apply(Meaning meaning, const Token& word, const ColorTable& colors, Format& format);

}  // namespace richtext
