#pragma once

#include "richtext/RichText.h"

#include <array>

namespace richtext {

/// The tags around the runs of a paragraph. Neighbours stay within the tags that they have in common, so that
/// a long address stands there once.
class InlineTags {
public:
    /// Runs of `bodyHalfPoints` get no size of their own. `document` outlives the tags.
    InlineTags(const Document& document, const HtmlLook& look, int bodyHalfPoints);

    /// Appends what has to be closed and opened before text of this style.
    void change(QString& html, const TextStyle& style);
    void close(QString& html);

private:
    /// What tells the tags of a level apart, from the outermost to the innermost; 0: none.
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
