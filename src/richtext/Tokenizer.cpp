#include "richtext/Tokenizer.h"

#include <algorithm>
#include <limits>

namespace richtext {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}

bool isPlain(char c) {
    return c != '\\' && c != '{' && c != '}' && !isLineEnd(c);
}

/// -1: no hexadecimal digit.
int hexValue(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

template <typename Condition>
QByteArrayView takeWhile(QByteArrayView& rest, Condition condition) {
    const auto end = std::find_if_not(rest.begin(), rest.end(), condition);
    const QByteArrayView taken = rest.first(end - rest.begin());
    rest = rest.sliced(taken.size());
    return taken;
}

int numberOf(QByteArrayView digits, bool negative) {
    constexpr qint64 kLimit = std::numeric_limits<int>::max();
    qint64 number = 0;
    for (const char digit : digits)
        number = std::min(number * 10 + (digit - '0'), kLimit);
    return static_cast<int>(negative ? -number : number);
}

}  // namespace

Token Tokenizer::next() {
    takeWhile(m_rest, isLineEnd);
    if (m_rest.isEmpty()) return {};
    const char first = m_rest.front();
    if (isPlain(first)) return {.kind = Token::Kind::Text, .text = takeWhile(m_rest, isPlain)};
    m_rest = m_rest.sliced(1);
    if (first == '\\') return afterBackslash();
    return {.kind = first == '{' ? Token::Kind::GroupBegin : Token::Kind::GroupEnd, .text = {}};
}

Token Tokenizer::afterBackslash() {
    if (m_rest.isEmpty()) return {};
    if (isLetter(m_rest.front())) return word();
    const QByteArrayView symbol = m_rest.first(1);
    m_rest = m_rest.sliced(1);
    if (symbol.front() != '\'') return {.kind = Token::Kind::Symbol, .text = symbol};
    const int high = m_rest.size() < 2 ? -1 : hexValue(m_rest[0]);
    const int low = high < 0 ? -1 : hexValue(m_rest[1]);
    if (low < 0) return {.kind = Token::Kind::Symbol, .text = symbol};
    m_rest = m_rest.sliced(2);
    m_byte = static_cast<char>(high * 16 + low);
    return {.kind = Token::Kind::Byte, .text = QByteArrayView(&m_byte, 1)};
}

Token Tokenizer::word() {
    Token token{.kind = Token::Kind::Word, .text = takeWhile(m_rest, isLetter)};
    const bool negative = m_rest.size() > 1 && m_rest[0] == '-' && isDigit(m_rest[1]);
    if (negative) m_rest = m_rest.sliced(1);
    const QByteArrayView digits = takeWhile(m_rest, isDigit);
    token.hasParameter = !digits.isEmpty();
    token.parameter = numberOf(digits, negative);
    if (m_rest.startsWith(' ')) m_rest = m_rest.sliced(1);
    if (token.text == "bin" && token.parameter > 0)
        m_rest = m_rest.sliced(std::min<qsizetype>(token.parameter, m_rest.size()));
    return token;
}

}  // namespace richtext
