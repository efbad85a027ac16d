#include "tool/cage/Programs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cstring>
#include <elf.h>
#include <limits.h>
#include <optional>

namespace programs {

namespace {

/// The path of the dynamic loader. Null: the file is no program for this machine; empty: it needs none.
std::optional<QString> loader(QFile& file, const QByteArray& head) {
    Elf64_Ehdr header;
    if (head.size() < qsizetype{sizeof header} || !head.startsWith(QByteArray(ELFMAG, SELFMAG)))
        return std::nullopt;
    std::memcpy(&header, head.constData(), sizeof header);
    constexpr int kMaximumSegments = 64;
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_phnum > kMaximumSegments) return QString();
    for (int i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!file.seek(static_cast<qint64>(header.e_phoff) + i * qint64{sizeof segment})) break;
        if (file.read(reinterpret_cast<char*>(&segment), sizeof segment) != qint64{sizeof segment}) break;
        if (segment.p_type != PT_INTERP || segment.p_filesz > PATH_MAX) continue;
        if (!file.seek(static_cast<qint64>(segment.p_offset))) break;
        return QFile::decodeName(file.read(static_cast<qint64>(segment.p_filesz)).constData());
    }
    return QString();
}

}  // namespace

QStringList executed(const QString& program) {
    constexpr int kMaximumDepth = 4;  // The kernel's own limit for scripts of scripts.
    QStringList all;
    QString path = program;
    while (!path.isEmpty() && all.size() < kMaximumDepth) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) return {};
        const QByteArray head = file.peek(PATH_MAX);
        all.append(path);
        if (head.startsWith("#!")) {
            static const QRegularExpression interpreter("^#![ \t]*([^ \t\n]+)");
            path = interpreter.match(QFile::decodeName(head)).captured(1);
        } else if (const auto found = loader(file, head)) {
            if (!found->isEmpty()) all.append(*found);
            break;
        } else {
            return {};
        }
    }
    return all;
}

QStringList libraries(const QString& program) {
    QStringList all = {"/lib",       "/lib32",         "/lib64",           "/usr/lib",          "/usr/lib32",
                       "/usr/lib64", "/usr/local/lib", "/etc/ld.so.cache", "/etc/ld.so.preload"};
    static const QRegularExpression separators("[:; ]");
    for (const char* variable : {"LD_PRELOAD", "LD_LIBRARY_PATH"})
        all += qEnvironmentVariable(variable).split(separators, Qt::SkipEmptyParts);
    // A tool of the user's own may bring its libraries along.
    const QDir folder = QFileInfo(QFileInfo(program).canonicalFilePath()).dir();
    for (const char* name : {"lib", "../lib"}) {
        const QString beside = QDir::cleanPath(folder.filePath(name));
        if (!beside.isEmpty()) all.append(beside);
    }
    return all;
}

}  // namespace programs
