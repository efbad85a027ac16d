#include "richtext/Tables.h"

#include <algorithm>

namespace richtext {

namespace {

// More than any real document has; limits the memory for malicious input.
constexpr qsizetype kMaximumFonts = 4096;
constexpr qsizetype kMaximumColors = 4096;
constexpr qsizetype kLongestName = 64;

/// Many writers declare no font family.
bool hasMonospacedName(const QByteArray& name) {
    const QByteArray lowered = name.toLower();
    const auto isPart = [&lowered](const char* part) { return lowered.contains(part); };
    return std::ranges::any_of(std::initializer_list<const char*>{"mono", "courier", "menlo", "consolas",
                                                                  "fixed", "monaco", "typewriter"},
                               isPart);
}

}  // namespace

void FontTable::read(Meaning meaning, int parameter) {
    if (meaning == Meaning::Font) {
        m_current = parameter;
        m_name.clear();
        return;
    }
    if (m_fonts.size() >= kMaximumFonts && !m_fonts.contains(m_current)) return;
    if (meaning == Meaning::FontIsMonospaced) m_fonts[m_current].isMonospaced = true;
    if (meaning == Meaning::FontCharset) m_fonts[m_current].charset = parameter;
    if (meaning == Meaning::FontCodePage) m_fonts[m_current].codePage = parameter;
}

void FontTable::readText(QByteArrayView text) {
    const qsizetype end = std::max<qsizetype>(0, QByteArrayView(text).indexOf(';'));
    const bool isComplete = text.contains(';');
    const QByteArrayView piece = isComplete ? text.first(end) : text;
    if (m_name.size() < kLongestName) m_name.append(piece.first(std::min(piece.size(), kLongestName)));
    if (!isComplete) return;
    if (hasMonospacedName(m_name)) read(Meaning::FontIsMonospaced, 0);
    m_name.clear();
}

void ColorTable::read(Meaning meaning, int parameter) {
    const auto share = static_cast<quint32>(std::clamp(parameter, 0, 0xFF));
    const unsigned shift = meaning == Meaning::Red ? 16 : meaning == Meaning::Green ? 8 : 0;
    const quint32 others = m_current.value_or(0) & ~(0xFFU << shift);
    m_current = others | share << shift;
}

void ColorTable::readText(QByteArrayView text) {
    for (const char c : text) {
        if (c != ';') continue;
        if (m_colors.size() < kMaximumColors) m_colors.append(m_current);
        m_current.reset();
    }
}

std::optional<quint32> ColorTable::color(int index) const {
    return index >= 0 && index < m_colors.size() ? m_colors.at(index) : std::nullopt;
}

}  // namespace richtext
