#include "richtext/Reader.h"

#include "richtext/Links.h"

#include <algorithm>
#include <utility>

namespace richtext {

namespace {

constexpr size_t kDeepest = 1000;  // Real documents nest about twelve groups.

bool isDestination(Meaning meaning) {
    return meaning >= Meaning::Skipped && meaning <= Meaning::Label;
}

}  // namespace

std::optional<Document> read(QByteArrayView rtf) {
    return Reader(rtf).read();
}

std::optional<Document> Reader::read() {
    if (m_tokens.next().kind != Token::Kind::GroupBegin) return std::nullopt;
    if (const Token first = m_tokens.next(); first.kind != Token::Kind::Word || first.text != "rtf")
        return std::nullopt;
    m_groups.emplace_back();
    for (Token token = m_tokens.next(); token.kind != Token::Kind::End; token = m_tokens.next()) {
        readToken(token);
        if (m_isComplete) break;
    }
    writeBytes();
    return m_document.finish(group().format.paragraph);
}

void Reader::readToken(const Token& token) {
    if (token.kind == Token::Kind::GroupBegin) return beginGroup();
    if (token.kind == Token::Kind::GroupEnd) return endGroup();
    if (m_groupsTooDeep > 0 || group().destination == Destination::Skipped) return;
    if (token.kind == Token::Kind::Word) return readWord(token);
    if (token.kind == Token::Kind::Symbol) return readSymbol(token.text);
    readBytes(token.text);
}

void Reader::beginGroup() {
    if (m_groups.size() >= kDeepest) {
        ++m_groupsTooDeep;
        return;
    }
    writeBytes();
    m_fallback = 0;
    Group inner = group();
    inner.isOptional = false;
    m_groups.push_back(inner);
}

void Reader::endGroup() {
    if (m_groupsTooDeep > 0) {
        --m_groupsTooDeep;
        return;
    }
    writeBytes();
    m_fallback = 0;
    m_isComplete = m_groups.size() == 1;
    if (!m_isComplete) m_groups.pop_back();
}

void Reader::readWord(const Token& token) {
    writeBytes();
    const Word word = wordNamed(token.text);
    if (std::exchange(group().isOptional, false) && !isDestination(word.meaning))
        return enter(Destination::Skipped);
    if (word.meaning == Meaning::Character) return readCharacter(word.character);
    m_fallback = 0;  // Only characters are fallback; any other token ends it.
    switch (word.meaning) {
        case Meaning::Unicode:
            return readUnicode(token.parameter);
        case Meaning::FallbackLength:
            group().fallbackLength = token.hasParameter ? std::max(0, token.parameter) : 1;
            return;
        case Meaning::EndOfParagraph:
            return endParagraph();
        case Meaning::Skipped:
            return enter(Destination::Skipped);
        case Meaning::FontTable:
            return enter(Destination::FontTable);
        case Meaning::ColorTable:
            return enter(Destination::ColorTable);
        case Meaning::Label:
            return enter(Destination::Label);
        case Meaning::Field:
            m_instruction.clear();
            return;
        case Meaning::FieldInstruction:
            return enter(Destination::Instruction);
        case Meaning::FieldResult:
            return enterFieldResult();
        case Meaning::CodePage:
            m_codePage = word.character > 0 ? word.character : token.parameter;
            return;
        case Meaning::DefaultFont:
            m_defaultFont = token.parameter;
            return;
        default:
            break;
    }
    const Destination destination = group().destination;
    if (destination == Destination::FontTable || destination == Destination::ColorTable)
        readTableWord(word.meaning, token.parameter);
    else
        apply(word.meaning, token, m_colors, group().format);
}

void Reader::readTableWord(Meaning meaning, int parameter) {
    const bool isOfFont = meaning == Meaning::Font ||
                          (meaning >= Meaning::FontIsMonospaced && meaning <= Meaning::FontCodePage);
    const bool isOfColor = meaning >= Meaning::Red && meaning <= Meaning::Blue;
    if (isOfFont && group().destination == Destination::FontTable) m_fonts.read(meaning, parameter);
    if (isOfColor && group().destination == Destination::ColorTable) m_colors.read(meaning, parameter);
}

void Reader::readSymbol(QByteArrayView symbol) {
    switch (symbol.front()) {
        case '*':
            writeBytes();
            group().isOptional = true;
            break;
        case '\r':
        case '\n':
            writeBytes();
            m_fallback = 0;
            endParagraph();
            break;
        case '\\':
        case '{':
        case '}':
            readBytes(symbol);
            break;
        case '\t':
            readCharacter(u'\t');
            break;
        case '~':
            readCharacter(u'\u00A0');
            break;
        case '_':
            readCharacter(u'\u2011');
            break;
        case '-':
            readCharacter(u'\u00AD');
            break;
        default:
            break;
    }
}

void Reader::readBytes(QByteArrayView bytes) {
    const auto passed = static_cast<int>(std::min<qsizetype>(m_fallback, bytes.size()));
    m_fallback -= passed;
    bytes = bytes.sliced(passed);
    if (group().destination == Destination::FontTable)
        m_fonts.readText(bytes);
    else if (group().destination == Destination::ColorTable)
        m_colors.readText(bytes);
    else
        m_bytes.append(bytes);
}

void Reader::readUnicode(int code) {
    m_fallback = group().fallbackLength;
    if (code < 0) code += 0x10000;  // RTF writes it as a signed 16-bit number.
    const bool isSign = code > 0xF000 && code <= 0xF0FF && codePage() == kSymbolCodePage;
    if (isSign) {
        m_bytes.append(static_cast<char>(code & 0xFF));
        writeBytes();
    } else if (code >= 0 && code <= 0xFFFF) {
        const QChar unit(static_cast<char16_t>(code));
        write(QStringView(&unit, 1));
    } else {
        const auto character = static_cast<char32_t>(code);
        write(QString::fromUcs4(&character, 1));
    }
}

void Reader::readCharacter(char16_t character) {
    writeBytes();
    if (m_fallback > 0) {
        --m_fallback;
        return;
    }
    const QChar unit(character);
    write(QStringView(&unit, 1));
}

void Reader::enter(Destination destination) {
    // Only a group can be a destination: a stray word must not skip the whole document.
    if (m_groups.size() > 1) group().destination = destination;
}

void Reader::enterFieldResult() {
    const QString address = linkOfInstruction(std::exchange(m_instruction, {}));
    // Inside a link, the outer link is kept.
    int& link = group().format.text.link;
    if (!address.isEmpty() && link < 0) link = m_document.addLink(address);
}

void Reader::endParagraph() {
    if (group().destination == Destination::Text) m_document.endParagraph(group().format.paragraph);
}

void Reader::writeBytes() {
    if (m_bytes.isEmpty()) return;
    write(m_codePages.decode(m_bytes, codePage()));
    m_bytes.resize(0);  // Keeps the capacity for the next bytes.
}

void Reader::write(QStringView text) {
    Group& current = group();
    if (current.destination == Destination::Instruction) m_instruction.append(text);
    if (current.destination == Destination::Label) m_document.appendLabel(text);
    if (current.destination != Destination::Text || current.format.isHidden) return;
    TextStyle style = current.format.text;
    style.isMonospaced = font().isMonospaced;
    m_document.appendText(text, style);
}

Font Reader::font() {
    const int number = group().format.font;
    return m_fonts.font(number < 0 ? m_defaultFont : number);
}

int Reader::codePage() {
    const Font current = font();
    return current.codePage > 0 ? current.codePage : codePageOfCharset(current.charset, m_codePage);
}

}  // namespace richtext
