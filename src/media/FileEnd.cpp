#include "media/FileEnd.h"

#include "media/FileReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

namespace media {

namespace {

constexpr std::size_t kTail = 128 * 1024;
constexpr std::string_view kPack("\0\0\1\xBA", 4);
constexpr std::string_view kStartCode("\0\0\1", 3);

/// The end of a file, and how long the whole is.
struct Tail {
    std::vector<unsigned char> bytes;
    quint64 fileSize = 0;

    /// The last place of `mark`; the size of the tail if there is none.
    std::size_t lastOf(std::string_view mark) const {
        const auto found =
            std::find_end(bytes.begin(), bytes.end(), mark.begin(), mark.end(),
                          [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); });
        return static_cast<std::size_t>(found - bytes.begin());
    }
    Bytes from(std::size_t position) const { return Bytes(bytes).subspan(std::min(position, bytes.size())); }
};

bool startsWith(Bytes bytes, std::string_view mark) {
    return bytes.size() >= mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
}

/// Packets of 188 bytes, or of 192 with a time in front.
bool transportStreamIsCut(Bytes begin, quint64 fileSize) {
    for (const auto& [size, offset] : {std::pair{std::size_t{188}, std::size_t{0}}, {192, 4}}) {
        constexpr unsigned char kSync = 0x47;
        bool fits = begin.size() > offset + 4 * size;
        for (std::size_t i = 0; fits && i < 4; ++i)
            fits = begin[offset + i * size] == kSync;
        if (fits) return fileSize % size != 0;
    }
    return false;
}

bool oggIsCut(const Tail& tail) {
    constexpr std::size_t kHeader = 27;
    const Bytes page = tail.from(tail.lastOf("OggS"));
    if (page.empty()) return false;
    if (page.size() < kHeader) return true;
    const std::size_t segments = page[kHeader - 1];
    if (page.size() < kHeader + segments) return true;
    std::size_t length = kHeader + segments;
    for (std::size_t i = 0; i < segments; ++i)
        length += page[kHeader + i];
    return length > page.size();
}

/// Walks the packets behind the last pack header.
bool programStreamIsCut(const Tail& tail) {
    constexpr std::size_t kPackHeader = 12;  // the shorter one, of MPEG-1
    std::size_t position = tail.lastOf(kPack);
    if (position == tail.bytes.size()) return false;
    if (tail.from(position).size() < kPackHeader) return true;
    const unsigned char marker = tail.bytes[position + 4];
    const bool isMpeg2 = (marker & 0xC0U) == 0x40U;
    constexpr std::size_t kMpeg2Header = 14;
    position += isMpeg2 ? kMpeg2Header : kPackHeader;
    if (isMpeg2) {
        if (position > tail.bytes.size()) return true;
        position += tail.bytes[position - 1] & 7U;  // stuffing
    }
    while (position < tail.bytes.size()) {
        constexpr std::size_t kStart = 6;
        const Bytes packet = tail.from(position);
        if (!startsWith(packet, kStartCode)) return false;
        if (packet.size() >= 4 && packet[3] == 0xB9) return false;  // the end code
        if (packet.size() < kStart) return true;
        position += kStart + bigEndian(packet.subspan(4, 2));
    }
    return position > tail.bytes.size();
}

/// A tag is followed by its size.
bool flvIsCut(const Tail& tail) {
    constexpr quint64 kTagHeader = 11;
    constexpr std::size_t kSize = 4;
    if (tail.bytes.size() < kSize) return true;
    const quint64 size = bigEndian(tail.from(tail.bytes.size() - kSize));
    if (size < kTagHeader || size + kSize > tail.bytes.size()) return tail.fileSize == tail.bytes.size();
    const Bytes tag = tail.from(tail.bytes.size() - kSize - static_cast<std::size_t>(size));
    return bigEndian(tag.subspan(1, 3)) + kTagHeader != size;
}

bool aviIsCut(Bytes begin, quint64 fileSize) {
    constexpr quint64 kHeader = 8;
    quint64 size = 0;
    for (std::size_t i = kHeader; i-- > kHeader / 2;)
        size = size << 8U | begin[i];
    return size + kHeader > fileSize;
}

}  // namespace

std::optional<bool> endsInsideUnit(const QString& path) {
    File file(path);
    std::vector<unsigned char> begin(1024);
    begin.resize(file.read(0, begin));
    const quint64 tailSize = std::min<quint64>(file.size(), kTail);
    Tail tail{std::vector<unsigned char>(static_cast<std::size_t>(tailSize)), file.size()};
    tail.bytes.resize(file.read(file.size() - tailSize, tail.bytes));
    if (!file.isOpen() || file.hasFailed()) return std::nullopt;

    if (startsWith(begin, "OggS")) return oggIsCut(tail);
    if (startsWith(begin, kPack)) return programStreamIsCut(tail);
    if (startsWith(begin, "FLV")) return flvIsCut(tail);
    if (startsWith(begin, "RIFF") && begin.size() > 12) return aviIsCut(begin, file.size());
    return transportStreamIsCut(begin, file.size());
}

std::optional<bool> isProgramStream(const QString& path) {
    File file(path);
    std::array<unsigned char, kPack.size()> begin = {};
    const std::size_t length = file.read(0, begin);
    if (!file.isOpen() || file.hasFailed()) return std::nullopt;
    return startsWith(std::span(begin).first(length), kPack);
}

}  // namespace media
