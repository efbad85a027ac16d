#pragma once

#include "richtext/RichText.h"

#include <array>

namespace richtext {

/// Writes the tags around the runs of a paragraph. Adjacent runs share common tags, so that a long address is
/// written once. Each instance is for one thread.
class InlineTags {
public:
    /// Runs of the size `bodyHalfPoints` get no explicit size. `document` must outlive this.
    InlineTags(const Document& document, const HtmlLook& look, int bodyHalfPoints);

    /// Appends the closing and opening tags before text of this style.
    void change(QString& html, const TextStyle& style);
    void close(QString& html);

private:
    /// The key of the open tag per level, from the outermost to the innermost; 0: no tag.
    using Levels = std::array<quint64, 5>;

    Levels levelsOf(const TextStyle& style) const;
    void append(QString& html, size_t level, quint64 key) const;
    void appendSpan(QString& html, quint64 key) const;
    void closeDownTo(QString& html, size_t level);
    bool isReadable(quint32 color) const;

    const Document& m_document;
    HtmlLook m_look;
    int m_bodyHalfPoints;
    double m_background;  ///< Its luminance.
    Levels m_open{};
};

}  // namespace richtext
