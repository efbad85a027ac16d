#pragma once

#include <QByteArrayView>

namespace richtext {

struct Token {
    enum class Kind {
        End,
        GroupBegin,
        GroupEnd,
        Word,    ///< A backslash and letters, in most cases with a number.
        Symbol,  ///< A backslash and one character, which `text` holds.
        Byte,    ///< A byte of text written as two hexadecimal digits.
        Text,    ///< Bytes of text; never empty, without line ends, which mean nothing.
    };

    Kind kind = Kind::End;
    QByteArrayView text;  ///< The word, the symbol, or the bytes. Points into the input.
    bool hasParameter = false;
    int parameter = 0;  ///< The nearest limit, where the number is out of range.
};

/// Cuts rich text into its tokens, one at a time. Raw data, which \bin announces, is passed over.
class Tokenizer {
public:
    explicit Tokenizer(QByteArrayView input) : m_rest(input) {}

    /// Always goes forward; at the end, and ever after, Kind::End.
    Token next();

private:
    Token afterBackslash();
    Token word();

    QByteArrayView m_rest;
    char m_byte = 0;  ///< What the text of a Byte points to.
};

}  // namespace richtext
