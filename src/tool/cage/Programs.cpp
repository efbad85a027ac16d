#include "tool/cage/Programs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QRegularExpression>

#include <array>
#include <cstring>
#include <elf.h>
#include <limits.h>
#include <optional>
#include <sys/stat.h>

namespace programs {

namespace {

bool isElf(const QByteArray& head) {
    return head.startsWith(QByteArray(ELFMAG, SELFMAG));
}

/// Of the file's beginning; null: it is too short.
std::optional<Elf64_Ehdr> headerIn(const QByteArray& head) {
    Elf64_Ehdr header;
    if (head.size() < qsizetype{sizeof header}) return std::nullopt;
    std::memcpy(&header, head.constData(), sizeof header);
    return header;
}

/// Null: it cannot be read.
std::optional<Elf64_Phdr> segment(QFile& file, const Elf64_Ehdr& header, int index) {
    Elf64_Phdr found;
    constexpr auto kSize = qint64{sizeof found};
    if (!file.seek(static_cast<qint64>(header.e_phoff) + index * kSize) ||
        file.read(reinterpret_cast<char*>(&found), kSize) != kSize)
        return std::nullopt;
    return found;
}

/// Of the running program; zeros: unknown.
const Elf64_Ehdr& ownHeader() {
    static const Elf64_Ehdr header = [] {
        QFile file("/proc/self/exe");
        return file.open(QIODevice::ReadOnly) ? headerIn(file.peek(sizeof(Elf64_Ehdr))).value_or(Elf64_Ehdr())
                                              : Elf64_Ehdr();
    }();
    return header;
}

bool isForOtherProcessor(const Elf64_Ehdr& header) {
    const Elf64_Ehdr& own = ownHeader();
    return own.e_machine != EM_NONE &&
           (header.e_machine != own.e_machine || header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] ||
            header.e_ident[EI_DATA] != own.e_ident[EI_DATA]);
}

bool endsTooEarly(QFile& file, const Elf64_Ehdr& header) {
    const auto size = static_cast<quint64>(file.size());
    for (int i = 0; i < header.e_phnum; ++i) {
        const auto each = segment(file, header, i);
        if (!each) return true;
        if (each->p_type == PT_LOAD && (each->p_offset > size || each->p_filesz > size - each->p_offset))
            return true;
    }
    return false;
}

/// The path of the dynamic loader. Null: the file is no program for this machine; empty: it needs none.
std::optional<QString> loader(QFile& file, const QByteArray& head) {
    const auto header = headerIn(head);
    if (!header || !isElf(head)) return std::nullopt;
    constexpr int kMaximumSegments = 64;
    if (header->e_ident[EI_CLASS] != ELFCLASS64 || header->e_phnum > kMaximumSegments) return QString();
    for (int i = 0; i < header->e_phnum; ++i) {
        const auto each = segment(file, *header, i);
        if (!each) break;
        if (each->p_type != PT_INTERP || each->p_filesz > PATH_MAX) continue;
        if (!file.seek(static_cast<qint64>(each->p_offset))) break;
        return QFile::decodeName(file.read(static_cast<qint64>(each->p_filesz)).constData());
    }
    return QString();
}

QStringList readExecuted(const QString& program) {
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

Flaw readFlaw(const QString& program) {
    QFile file(program);
    if (!file.open(QIODevice::ReadOnly)) return Flaw::None;
    const QByteArray head = file.peek(sizeof(Elf64_Ehdr));
    if (head.startsWith("#!")) return Flaw::None;
    if (!head.isEmpty() && !isElf(head)) return Flaw::NoProgram;
    const auto header = headerIn(head);
    if (!header) return Flaw::CutOff;
    if (isForOtherProcessor(*header)) return Flaw::OtherProcessor;
    return header->e_ident[EI_CLASS] == ELFCLASS64 && endsTooEarly(file, *header) ? Flaw::CutOff : Flaw::None;
}

/// A tool of the user's own may bring its libraries along.
QStringList foldersBeside(const QString& program) {
    QStringList folders;
    const QDir folder = QFileInfo(QFileInfo(program).canonicalFilePath()).dir();
    for (const char* name : {"lib", "../lib"}) {
        const QString beside = QDir::cleanPath(folder.filePath(name));
        if (!beside.isEmpty()) folders.append(beside);
    }
    return folders;
}

/// What a program's file shows. Every start of the tool asks for all of it.
struct Look {
    QStringList executed;
    QStringList foldersBeside;
    Flaw flaw = Flaw::None;
};

/// Changes with the file and its contents.
struct Identity {
    QString path;
    std::array<qint64, 7> numbers = {};

    bool operator==(const Identity&) const = default;
};

Identity identityOf(const QString& program) {
    struct stat file = {};
    if (::stat(QFile::encodeName(program).constData(), &file) != 0) return {};
    return {program,
            {static_cast<qint64>(file.st_dev), static_cast<qint64>(file.st_ino), file.st_size,
             file.st_mtim.tv_sec, file.st_mtim.tv_nsec, file.st_ctim.tv_sec, file.st_ctim.tv_nsec}};
}

Look lookAt(const QString& program) {
    struct Last {
        QMutex mutex;
        Identity identity;
        Look look;
    };
    // Never destroyed: threads that nobody waits for may still start the tool at exit.
    static Last& last = *new Last;
    const QMutexLocker lock(&last.mutex);
    const Identity identity = identityOf(program);
    if (!identity.path.isEmpty() && identity == last.identity) return last.look;
    last.look = {readExecuted(program), foldersBeside(program), readFlaw(program)};
    // What a script starts may change without it.
    constexpr qsizetype kProgramAndLoader = 2;
    last.identity = last.look.executed.size() <= kProgramAndLoader ? identity : Identity();
    return last.look;
}

}  // namespace

QStringList executed(const QString& program) {
    return lookAt(program).executed;
}

Flaw flaw(const QString& program) {
    return lookAt(program).flaw;
}

QStringList libraries(const QString& program) {
    QStringList all = {"/etc/ld.so.cache", "/etc/ld.so.preload"};
    static const QRegularExpression separators("[:; ]");
    for (const char* variable : {"LD_PRELOAD", "LD_LIBRARY_PATH"})
        all += qEnvironmentVariable(variable).split(separators, Qt::SkipEmptyParts);
    return all + lookAt(program).foldersBeside;
}

QStringList systemLibraries() {
    return {"/lib", "/lib32", "/lib64", "/usr/lib", "/usr/lib32", "/usr/lib64", "/usr/local/lib"};
}

}  // namespace programs
