#include "media/VisibleText.h"

#include <algorithm>
#include <string_view>

namespace media {

namespace {

constexpr std::string_view kEntity = "&nbsp;";
constexpr quint64 kLongestText = 65536;

}  // namespace

bool VisibleText::feed(Bytes text) {
    return std::ranges::any_of(text, [this](unsigned char byte) { return feed(byte); });
}

bool VisibleText::feed(unsigned char byte) {
    if (m_found) return true;
    switch (m_state) {
        case State::Tag:
            if (byte == '>') m_state = State::Text;
            return false;
        case State::Braces:
            if (byte == '}') m_state = State::Text;
            return false;
        case State::Escape:
            m_state = State::Text;
            return see(byte != 'N' && byte != 'n' && byte != 'h');
        case State::Entity:
            if (byte != static_cast<unsigned char>(kEntity[m_matched])) return see(true);
            if (++m_matched == kEntity.size()) m_state = State::Text;
            return false;
        case State::Text:
            break;
    }
    if (byte >= 0x80) {
        // No-break space, zero-width characters and the byte-order mark are invisible; so each needs to be
        // whole.
        m_character = m_character << 8U | byte;
        if (m_character == 0xC2 || m_character == 0xE2 || m_character == 0xE280 || m_character == 0xEF ||
            m_character == 0xEFBB)
            return false;
        const bool invisible = m_character == 0xC2A0 || m_character == 0xEFBBBF ||
                               (m_character >= 0xE28080 && m_character <= 0xE2808F) ||
                               m_character == 0xE280AF;
        m_character = 0;
        return see(!invisible);
    }
    if (m_character != 0) return see(true);  // Another encoding.
    if (byte == '<') m_state = State::Tag;
    if (byte == '{') m_state = State::Braces;
    if (byte == '\\') m_state = State::Escape;
    if (byte == '&') {
        m_state = State::Entity;
        m_matched = 1;
    }
    return see(m_state == State::Text && byte > ' ' && byte != 0x7F);
}

bool hasVisibleText(FileReader& bytes, quint64 position, quint64 end) {
    VisibleText text;
    end = std::min(end, position + kLongestText);
    while (position < end) {
        Bytes some = bytes.from(position);
        if (some.empty()) break;
        some = some.first(std::min<quint64>(some.size(), end - position));
        if (text.feed(some)) return true;
        position += some.size();
    }
    return text.found();
}

}  // namespace media
