#include "richtext/InlineTags.h"

#include "richtext/HtmlText.h"

#include <algorithm>
#include <cmath>

namespace richtext {

namespace {

enum Level : size_t { kLink, kSpan, kUnderline, kItalic, kBold };
constexpr std::array<QStringView, 5> kClosing{u"</a>", u"</span>", u"</u>", u"</i>", u"</b>"};

// Bit fields of a span's key.
constexpr quint64 kHasColor = 1ULL << 24U;
constexpr quint64 kIsMonospaced = 1ULL << 25U;
constexpr unsigned kSizeShift = 32;

/// The relative luminance of the web's contrast guidelines.
double luminance(quint32 color) {
    const auto linear = [color](unsigned shift) {
        const double share = static_cast<double>(color >> shift & 0xFFU) / 0xFF;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
}

}  // namespace

InlineTags::InlineTags(const Document& document, const HtmlLook& look, int bodyHalfPoints)
    : m_document(document),
      m_look(look),
      m_bodyHalfPoints(bodyHalfPoints),
      m_background(luminance(look.background.value_or(0))) {}

void InlineTags::change(QString& html, const TextStyle& style) {
    const Levels wanted = levelsOf(style);
    const auto differs = std::ranges::mismatch(m_open, wanted).in1;
    const auto common = static_cast<size_t>(differs - m_open.begin());
    closeDownTo(html, common);
    for (size_t level = common; level < wanted.size(); ++level) {
        if (wanted.at(level) != 0) append(html, level, wanted.at(level));
    }
    m_open = wanted;
}

void InlineTags::close(QString& html) {
    closeDownTo(html, 0);
    m_open = {};
}

void InlineTags::closeDownTo(QString& html, size_t level) {
    for (size_t i = m_open.size(); i > level; --i) {
        if (m_open.at(i - 1) != 0) html.append(kClosing.at(i - 1));
    }
}

InlineTags::Levels InlineTags::levelsOf(const TextStyle& style) const {
    const bool isLink = style.link >= 0;
    Levels levels{};
    levels[kLink] = isLink ? static_cast<quint64>(style.link) + 1 : 0;
    if (style.color && !isLink && isReadable(*style.color)) levels[kSpan] |= kHasColor | *style.color;
    if (style.isMonospaced) levels[kSpan] |= kIsMonospaced;
    if (style.halfPoints != m_bodyHalfPoints)
        levels[kSpan] |= static_cast<quint64>(style.halfPoints) << kSizeShift;
    levels[kUnderline] = style.isUnderlined && !isLink ? 1 : 0;
    levels[kItalic] = style.isItalic ? 1 : 0;
    levels[kBold] = style.isBold ? 1 : 0;
    return levels;
}

void InlineTags::append(QString& html, size_t level, quint64 key) const {
    switch (level) {
        case kLink:
            html.append(u"<a href=\"");
            appendEscaped(html, m_document.links.at(static_cast<qsizetype>(key - 1)));
            html.append(u"\">");
            break;
        case kSpan:
            appendSpan(html, key);
            break;
        case kUnderline:
            html.append(u"<u>");
            break;
        case kItalic:
            html.append(u"<i>");
            break;
        default:
            html.append(u"<b>");
            break;
    }
}

void InlineTags::appendSpan(QString& html, quint64 key) const {
    html.append(u"<span style=\"");
    if (const auto halfPoints = static_cast<int>(key >> kSizeShift); halfPoints > 0) {
        const double scale = m_look.bodyPoints > 0 ? m_look.bodyPoints / m_bodyHalfPoints : 0.5;
        html.append("font-size:" + QString::number(halfPoints * scale, 'g', 4) + "pt;");
    }
    if ((key & kIsMonospaced) != 0) html.append(u"font-family:monospace;");
    if ((key & kHasColor) != 0)
        html.append("color:#" + QString::number(key & 0xFFFFFFU, 16).rightJustified(6, u'0') + u';');
    html.append(u"\">");
}

bool InlineTags::isReadable(quint32 color) const {
    if (!m_look.background) return true;
    constexpr double kLeastContrast = 3;  // The web guidelines' minimum for large text.
    const auto [darker, lighter] = std::minmax({luminance(color), m_background});
    return (lighter + 0.05) / (darker + 0.05) >= kLeastContrast;
}

}  // namespace richtext
