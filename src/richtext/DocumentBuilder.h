#pragma once

#include "richtext/RichText.h"

namespace richtext {

/// Builds runs and paragraphs from pieces of text, and detects list items by their bullets. Each instance is
/// for one thread.
class DocumentBuilder {
public:
    void appendText(QStringView text, const TextStyle& style);
    /// Appends the bullet or number that a list gives to the paragraph.
    void appendLabel(QStringView text) { m_label.append(text); }
    void endParagraph(const ParagraphStyle& style);

    /// Returns the index for TextStyle::link. A link ends with the paragraph in which it began: repeating a
    /// long address in each paragraph of its field would make the document grow faster than its source.
    int addLink(const QString& address);

    /// `style` is that of the last paragraph, which may lack an end mark.
    Document finish(const ParagraphStyle& style);

private:
    void extractBulletFromText();
    void putBeforeText(const QString& label);

    Document m_document;
    Paragraph m_paragraph;
    QString m_label;
    qsizetype m_linksBefore = 0;  ///< Links below this index ended with their paragraphs.
};

}  // namespace richtext
