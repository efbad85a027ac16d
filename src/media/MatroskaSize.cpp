#include "media/MatroskaSize.h"

#include <QFile>

#include <array>
#include <bit>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace matroska {

namespace {

constexpr quint64 kHeader = 0x1A45DFA3;
constexpr quint64 kSegment = 0x18538067;
constexpr quint64 kVoid = 0xEC;
constexpr int kElementsBeforeSegment = 16;  // A header and some padding; a movie has no more.

using Bytes = std::array<unsigned char, 12>;  // Sum of the maximum lengths of an id and a size.

struct Number {
    quint64 value = 0;
    unsigned length = 0;
};

/// The number of leading zero bits in the first byte is the number of following bytes. An id includes the
/// marker bit, a size does not.
Number numberAt(const Bytes& bytes, unsigned offset, bool withMarker) {
    const unsigned char first = bytes.at(offset);
    const auto length = static_cast<unsigned>(std::countl_zero(first)) + 1;
    if (length > (withMarker ? 4U : 8U)) return {};
    Number number = {withMarker ? first : first & (0xFFU >> length), length};
    for (unsigned i = 1; i < length; ++i)
        number.value = number.value << 8U | bytes.at(offset + i);
    return number;
}

bool isOpenEnded(const Number& size) {
    return size.value == (quint64{1} << (7 * size.length)) - 1;
}

std::optional<quint64> sizeDeclaredIn(int file, quint64 fileSize) {
    quint64 offset = 0;
    for (int element = 0; element < kElementsBeforeSegment; ++element) {
        Bytes bytes = {};
        const ssize_t read = ::pread(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (read < 0) return std::nullopt;
        const auto available = static_cast<unsigned>(read);
        const std::optional<quint64> notYet = element > 0 ? std::optional(fileSize + 1) : std::nullopt;
        if (available == 0) return notYet;
        const Number id = numberAt(bytes, 0, true);
        const bool expected = element == 0 ? id.value == kHeader : id.value == kSegment || id.value == kVoid;
        if (available < id.length) return notYet;
        if (id.length == 0 || !expected) return std::nullopt;
        if (available == id.length) return fileSize + 1;
        const Number size = numberAt(bytes, id.length, false);
        if (size.length == 0) return std::nullopt;
        if (available < id.length + size.length) return fileSize + 1;
        if (isOpenEnded(size)) return std::nullopt;
        offset += id.length + size.length + size.value;
        if (id.value == kSegment) return offset;
        if (offset > fileSize) return fileSize + 1;
    }
    return std::nullopt;
}

}  // namespace

std::optional<quint64> declaredSize(const QString& path) {
    const int file =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) return std::nullopt;
    struct stat status = {};
    std::optional<quint64> size;
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        size = sizeDeclaredIn(file, static_cast<quint64>(status.st_size));
    ::close(file);
    return size;
}

}  // namespace matroska
