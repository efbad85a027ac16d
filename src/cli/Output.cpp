#include "cli/Output.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace output {

namespace {

void write(std::FILE* stream, const QByteArray& bytes) {
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
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
    write(stdout, lineOf(text));
}

void raw(const QString& text) {
    write(stdout, text.toUtf8());
}

void json(const QJsonObject& object) {
    write(stdout, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void error(const QString& text) {
    write(stderr, lineOf(text));
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
