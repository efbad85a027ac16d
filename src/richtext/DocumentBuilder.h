#pragma once

#include "richtext/RichText.h"

namespace richtext {

/// Puts runs and paragraphs together from text as it comes, and tells list items by their bullets.
class DocumentBuilder {
public:
    void appendText(QStringView text, const TextStyle& style);
    /// A bullet or a number that a list gave to the paragraph.
    void appendLabel(QStringView text) { m_label.append(text); }
    void endParagraph(const ParagraphStyle& style);

    /// The index for TextStyle::link. A link ends with the paragraph in which it began: were it repeated in
    /// each that its field holds, a long address would make the document grow faster than its source.
    int addLink(const QString& address);

    /// `style` is that of the last paragraph, which nothing has to end.
    Document finish(const ParagraphStyle& style);

private:
    void takeBulletFromText();
    void putBeforeText(const QString& label);

    Document m_document;
    Paragraph m_paragraph;
    QString m_label;
    qsizetype m_linksBefore = 0;  ///< Links below this index ended with their paragraphs.
};

}  // namespace richtext
