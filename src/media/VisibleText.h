#pragma once

#include "media/FileReader.h"

namespace media {

/// Looks for a character in subtitle text that leaves something on the screen: white space, "<i>", "{\an8}",
/// the escapes \N, \n, \h and "&nbsp;" do not. The text is UTF-8 or another superset of ASCII and comes in
/// pieces.
class VisibleText {
public:
    /// True once there was such a character.
    bool feed(Bytes text);
    bool feed(unsigned char byte);
    /// At the end of a text: an opened bracket that was not closed is text.
    bool found() const { return m_found || m_state == State::Tag || m_state == State::Entity; }

private:
    enum class State { Text, Tag, Braces, Escape, Entity };

    bool see(bool visible) { return m_found = m_found || visible; }

    State m_state = State::Text;
    unsigned m_matched = 0;   // Of "&nbsp;".
    quint32 m_character = 0;  // The last bytes of one that UTF-8 spreads.
    bool m_found = false;
};

/// The same for the bytes of a file from `position` to `end`. Of very long texts the beginning is looked at.
bool hasVisibleText(FileReader& bytes, quint64 position, quint64 end);

}  // namespace media
