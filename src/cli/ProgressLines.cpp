#include "cli/ProgressLines.h"

#include "cli/Output.h"
#include "support/Format.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kBarWidth = 20;

QString elidedInTheMiddle(const QString& text, qsizetype width) {
    if (text.size() <= width) return text;
    if (width < 2) return text.left(width);
    const qsizetype begin = width / 2;
    return text.left(begin) + u'…' + text.right(width - begin - 1);
}

QString bar(double percent) {
    const int filled = static_cast<int>(std::lround(percent / 100 * kBarWidth));
    return u'[' + QString(filled, u'#') + QString(kBarWidth - filled, u'.') + u']';
}

/// A line break in a name would tear the lines apart.
QString printable(QString name) {
    for (QChar& c : name) {
        if (!c.isPrint() && !c.isSurrogate()) c = u'?';
    }
    return name;
}

}  // namespace

QString progressLine(const ProgressLines::Line& line, int columns) {
    const QString percent = QString::number(static_cast<int>(line.percent)).rightJustified(3) + u'%';
    const QString figures = makeString(" %@ %@  ETA %@", bar(line.percent), percent, line.remaining);
    const qsizetype room = std::max<qsizetype>(8, columns - 1 - figures.size());
    return elidedInTheMiddle(printable(line.name), room) + figures;
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
