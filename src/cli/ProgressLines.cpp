#include "cli/ProgressLines.h"

#include "cli/Output.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

namespace {

constexpr int kBarWidth = 20;

/// Width of the text in columns of the terminal: wide characters have two, combining marks none.
int columnsOf(const QString& text) {
    int columns = 0;
    for (const char32_t letter : text.toUcs4())
        columns += std::max(0, ::wcwidth(static_cast<wchar_t>(letter)));
    return columns;
}

QString elidedInTheMiddle(const QString& text, int width) {
    if (columnsOf(text) <= width) return text;
    QString begin = text;
    QString end = text;
    while (columnsOf(begin) > width / 2)
        begin.chop(begin.back().isLowSurrogate() ? 2 : 1);
    while (columnsOf(end) > width - width / 2 - 1)
        end.remove(0, end.front().isHighSurrogate() ? 2 : 1);
    return begin + u'…' + end;
}

QString bar(double percent) {
    const int filled = static_cast<int>(std::lround(percent / 100 * kBarWidth));
    return u'[' + QString(filled, u'#') + QString(kBarWidth - filled, u'.') + u']';
}

}  // namespace

QString progressLine(const ProgressLines::Line& line, int columns) {
    const QString percent = QString::number(static_cast<int>(line.percent)).rightJustified(3) + u'%';
    const QString figures =
        makeString(" %@ %@  ", bar(line.percent), percent) + Texts::tr("ETA %1").arg(line.remaining);
    const int nameColumns = std::max(8, columns - 1 - columnsOf(figures));
    return elidedInTheMiddle(line.name, nameColumns) + figures;
}

void ProgressLines::draw(const QList<Line>& lines) {
    clear();
    const int columns = output::columns();
    QStringList drawn;
    for (const Line& line : lines)
        drawn.append(progressLine(line, columns));
    output::raw(drawn.join(u'\n'));
    m_drawn = lines.size();
}

void ProgressLines::clear() {
    if (m_drawn == 0) return;
    const QString upward = m_drawn > 1 ? makeString("\x1b[%liA", m_drawn - 1) : QString();
    output::raw("\r" + upward + "\x1b[J");
    m_drawn = 0;
}
