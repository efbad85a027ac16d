#include "cli/Output.h"

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

}  // namespace

void line(const QString& text) {
    write(stdout, text.toUtf8() + '\n');
}

void raw(const QString& text) {
    write(stdout, text.toUtf8());
}

void json(const QJsonObject& object) {
    write(stdout, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void error(const QString& text) {
    write(stderr, text.toUtf8() + '\n');
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
