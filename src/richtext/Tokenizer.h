#pragma once

#include <QByteArrayView>

namespace richtext {

struct Token {
    enum class Kind {
        End,
        GroupBegin,
        GroupEnd,
        Word,    ///< A control word: a backslash and letters, usually with a number.
        Symbol,  ///< A control symbol: a backslash and one character, which is in `text`.
        Byte,    ///< A text byte written as two hexadecimal digits.
        Text,    ///< Text bytes; never empty, without line ends, which RTF ignores.
    };

    Kind kind = Kind::End;
    QByteArrayView text;  ///< The word, the symbol, or the bytes. Points into the input.
    bool hasParameter = false;
    int parameter = 0;  ///< Clamped if the number is out of range.
};

/// Splits rich text into tokens, one at a time. Skips the raw data after \bin. Each instance is for one
/// thread; the input must outlive it.
class Tokenizer {
public:
    explicit Tokenizer(QByteArrayView input) : m_rest(input) {}

    /// Returns the next token; Kind::End at the end and on every call after that.
    Token next();

private:
    Token afterBackslash();
    Token word();

    QByteArrayView m_rest;
    char m_byte = 0;  ///< Storage for the text of a Byte token.
};

}  // namespace richtext
