#include "richtext/DocumentBuilder.h"

#include <utility>

namespace richtext {

namespace {

bool isBullet(QChar c) {
    return QStringView(u"\u2022\u25E6\u25AA\u25AB\u25CF\u25CB\u25A0\u2023\u2043\u00B7").contains(c);
}

/// The separator after a bullet, which belongs to the list and not to the text.
bool isGap(QChar c) {
    return c == u'\t' || c.isSpace();
}

}  // namespace

void DocumentBuilder::appendText(QStringView text, const TextStyle& style) {
    if (text.isEmpty()) return;
    TextStyle wanted = style;
    if (wanted.link < m_linksBefore) wanted.link = -1;
    QList<Run>& runs = m_paragraph.runs;
    if (runs.isEmpty() || runs.constLast().style != wanted) runs.append(Run{.text = {}, .style = wanted});
    runs.last().text.append(text);
}

int DocumentBuilder::addLink(const QString& address) {
    m_document.links.append(address);
    return static_cast<int>(m_document.links.size() - 1);
}

void DocumentBuilder::endParagraph(const ParagraphStyle& style) {
    m_paragraph.style = style;
    const QString label = std::exchange(m_label, {}).trimmed();
    if (label.isEmpty())
        extractBulletFromText();
    else if (label.size() == 1 && (isBullet(label.front()) || QStringView(u"-\u2013o").contains(label)))
        m_paragraph.isListItem = true;
    else
        putBeforeText(label);
    m_document.paragraphs.append(std::exchange(m_paragraph, {}));
    m_linksBefore = m_document.links.size();
}

void DocumentBuilder::extractBulletFromText() {
    if (m_paragraph.runs.isEmpty()) return;
    QString& text = m_paragraph.runs.first().text;
    qsizetype start = 0;
    while (start < text.size() && isGap(text.at(start)))
        ++start;
    if (start + 1 >= text.size() || !isBullet(text.at(start)) || !isGap(text.at(start + 1))) return;
    qsizetype end = start + 1;
    while (end < text.size() && isGap(text.at(end)))
        ++end;
    text.remove(0, end);
    if (text.isEmpty()) m_paragraph.runs.removeFirst();
    m_paragraph.isListItem = true;
}

void DocumentBuilder::putBeforeText(const QString& label) {
    QList<Run>& runs = m_paragraph.runs;
    TextStyle style = runs.isEmpty() ? TextStyle{} : runs.constFirst().style;
    style.link = -1;
    runs.prepend(Run{.text = label + u'\t', .style = style});
}

Document DocumentBuilder::finish(const ParagraphStyle& style) {
    if (!m_paragraph.runs.isEmpty() || !m_label.isEmpty()) endParagraph(style);
    // Remove trailing blank lines.
    QList<Paragraph>& paragraphs = m_document.paragraphs;
    while (!paragraphs.isEmpty() && paragraphs.constLast().runs.isEmpty())
        paragraphs.removeLast();
    return std::exchange(m_document, {});
}

}  // namespace richtext
