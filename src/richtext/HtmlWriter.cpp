#include "richtext/HtmlText.h"
#include "richtext/InlineTags.h"
#include "richtext/RichText.h"

#include <QHash>

#include <algorithm>

namespace richtext {

namespace {

constexpr qsizetype kDeepestList = 8;

/// The most frequent size, by characters.
int bodyHalfPoints(const Document& document) {
    QHash<int, qsizetype> lengths;
    int most = TextStyle{}.halfPoints;
    for (const Paragraph& paragraph : document.paragraphs) {
        for (const Run& run : paragraph.runs) {
            const int size = run.style.halfPoints;
            lengths[size] += run.text.size();
            if (lengths[size] > lengths.value(most)) most = size;
        }
    }
    return most;
}

QString pixels(int twips) {
    constexpr int kTwipsInAPixel = 15;
    return QString::number(twips / kTwipsInAPixel) + "px";
}

class HtmlWriter {
public:
    HtmlWriter(const Document& document, const HtmlLook& look)
        : m_document(document), m_tags(document, look, bodyHalfPoints(document)) {}

    QString write() {
        m_html = "<html><body style=\"white-space:pre-wrap\">";
        for (const Paragraph& paragraph : m_document.paragraphs)
            append(paragraph);
        closeLists(-1);
        return m_html + "</body></html>";
    }

private:
    void append(const Paragraph& paragraph) {
        if (paragraph.isListItem)
            openItem(paragraph.style.indent);
        else
            closeLists(-1);
        m_html.append(paragraph.isListItem ? "<li" : "<p");
        appendAttributes(paragraph);
        m_html.append(u'>');
        for (const Run& run : paragraph.runs) {
            m_tags.change(m_html, run.style);
            appendEscaped(m_html, run.text);
        }
        m_tags.close(m_html);
        // Makes a blank line visible.
        if (paragraph.runs.isEmpty()) m_html.append(u"<br/>");
        if (!paragraph.isListItem)
            m_html.append(u"</p>");  // A list item is closed later, as it may contain a list.
    }

    void appendAttributes(const Paragraph& paragraph) {
        const ParagraphStyle& style = paragraph.style;
        if (style.alignment == Alignment::Center) m_html.append(u" align=\"center\"");
        if (style.alignment == Alignment::Right) m_html.append(u" align=\"right\"");
        if (style.alignment == Alignment::Justified) m_html.append(u" align=\"justify\"");
        m_html.append(" style=\"margin-top:" + pixels(style.spaceBefore) +
                      ";margin-bottom:" + pixels(style.spaceAfter));
        if (!paragraph.isListItem && style.indent > 0) m_html.append(";margin-left:" + pixels(style.indent));
        const int first = std::max(style.firstLineIndent, -style.indent);
        if (!paragraph.isListItem && first != 0) m_html.append(";text-indent:" + pixels(first));
        if (paragraph.runs.isEmpty()) m_html.append(u";-qt-paragraph-type:empty");
        m_html.append(u'"');
    }

    /// An item with a larger indent than the previous one begins a nested list.
    void openItem(int indent) {
        closeLists(indent);
        const bool isFull = m_indents.size() >= kDeepestList;
        if (m_indents.isEmpty() || (m_indents.constLast() < indent && !isFull)) {
            m_indents.append(indent);
            m_html.append(u"<ul style=\"margin-top:0px;margin-bottom:0px\">");
        } else {
            m_html.append(u"</li>");
        }
    }

    /// Closes the lists with a larger indent than `indent`.
    void closeLists(int indent) {
        while (!m_indents.isEmpty() && m_indents.constLast() > indent) {
            m_html.append(u"</li></ul>");
            m_indents.removeLast();
        }
    }

    const Document& m_document;
    InlineTags m_tags;
    QString m_html;
    QList<int> m_indents;  ///< Indents of the open lists.
};

}  // namespace

QString toHtml(const Document& document, const HtmlLook& look) {
    return HtmlWriter(document, look).write();
}

}  // namespace richtext
