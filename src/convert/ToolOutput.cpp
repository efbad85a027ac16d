#include "convert/ToolOutput.h"

#include "convert/FailureExplanation.h"
#include "support/base/Text.h"

namespace {

constexpr qsizetype kMaximumOfBegin = 256 * 1024;  // characters
constexpr qsizetype kMaximumOfEnd = 64 * 1024;
constexpr qsizetype kMaximumOfRelevant = 16 * 1024;
constexpr qsizetype kLongestLine = 64 * 1024;

}  // namespace

void ToolOutput::append(const QByteArray& bytes) {
    m_unfinished += m_decoder(bytes);
    const auto lines = text::lines(m_unfinished);
    for (qsizetype i = 0; i + 1 < lines.size(); ++i)
        addLine(lines[i]);
    QString rest = lines.last().toString();
    if (rest.size() > kLongestLine) {
        addLine(rest);
        rest.clear();
    }
    m_unfinished = rest;
}

void ToolOutput::finish() {
    addLine(m_unfinished);
    m_unfinished.clear();
}

void ToolOutput::note(const QString& text) {
    keep(text);
}

void ToolOutput::addLine(QStringView line) {
    const bool isStatistics = line.contains(u"frame=") && line.contains(u"bitrate=");
    // A file of our own, of which nothing depends on the movie.
    const bool isProgressLog = line.startsWith(u"Error closing progress log");
    if (!isStatistics && !isProgressLog) keep(line);
}

void ToolOutput::keep(QStringView line) {
    if (m_end.isEmpty() && m_begin.size() + line.size() <= kMaximumOfBegin) {
        m_begin += line;
        return;
    }
    const bool isRelevant = m_relevant.size() < kMaximumOfRelevant && failure::explainsSomething(line);
    if (isRelevant && !m_relevant.contains(line)) m_relevant += line.left(kMaximumOfRelevant);
    m_end += line;
    // Truncate rarely, so that the cost stays linear in the length of the output.
    if (m_end.size() > 2 * kMaximumOfEnd) m_end = m_end.last(kMaximumOfEnd);
}
