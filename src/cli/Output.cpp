#include "cli/Output.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <cerrno>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace output {

namespace {

/// In one call, so that the lines of several processes that append to one file stay whole.
void write(int file, const QByteArray& bytes) {
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count =
            ::write(file, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count >= 0) {
            written += count;
        } else if (errno == EAGAIN) {
            // Another process has made the shared pipe or terminal non-blocking.
            pollfd ready = {file, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

/// Also what separates lines elsewhere or reverses the direction of the text.
bool controls(QChar c) {
    const ushort code = c.unicode();
    const bool isDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return c.category() == QChar::Other_Control || code == 0x2028 || code == 0x2029 || isDirection;
}

QString escaped(QChar c) {
    if (c == u'\n') return QStringLiteral("\\n");
    if (c == u'\r') return QStringLiteral("\\r");
    if (c == u'\t') return QStringLiteral("\\t");
    const int digits = c.unicode() < 0x80 ? 2 : 4;
    return QString(digits == 2 ? "\\x%1" : "\\u%1").arg(c.unicode(), digits, 16, QChar(u'0'));
}

QString escapedBut(const QString& text, QStringView kept) {
    QString result;
    for (const QChar c : text)
        result += controls(c) && !kept.contains(c) ? escaped(c) : QString(c);
    return result;
}

QByteArray lineOf(const QString& text) {
    return escapedBut(text, u"\n\t").toUtf8() + '\n';
}

}  // namespace

QString shown(const QString& name) {
    return escapedBut(name, {});
}

QString about(const QString& path, QString message) {
    const QFileInfo file(path);
    for (const QString& name : {file.path(), file.completeBaseName()}) {
        if (const QString escapedName = shown(name); escapedName != name) message.replace(name, escapedName);
    }
    return message;
}

void line(const QString& text) {
    write(STDOUT_FILENO, lineOf(text));
}

void raw(const QString& text) {
    write(STDOUT_FILENO, text.toUtf8());
}

void json(const QJsonObject& object) {
    write(STDOUT_FILENO, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void error(const QString& text) {
    write(STDERR_FILENO, lineOf(text));
}

bool isTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

int columns() {
    winsize size = {};
    constexpr int kUsual = 80;
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace output
