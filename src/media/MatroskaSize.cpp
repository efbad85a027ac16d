#include "media/MatroskaSize.h"

#include "media/Ebml.h"

namespace matroska {

namespace {

constexpr quint64 kHeader = 0x1A45DFA3;
constexpr quint64 kSegment = 0x18538067;
constexpr quint64 kVoid = 0xEC;
constexpr int kElementsBeforeSegment = 16;  // A header and some padding; a movie has no more.

}  // namespace

std::optional<quint64> declaredSize(const QString& path) {
    media::File file(path);
    media::FileReader reader(file);
    const quint64 notYet = file.size() + 1;
    quint64 offset = 0;
    for (int element = 0; element < kElementsBeforeSegment; ++element) {
        const media::Bytes bytes = reader.at(offset, ebml::kLongestHeader);
        if (file.hasFailed()) return std::nullopt;
        if (bytes.empty()) return element > 0 ? std::optional(notYet) : std::nullopt;
        const unsigned idLength = ebml::numberLength(bytes[0]);
        if (idLength <= 4 && bytes.size() < idLength)
            return element > 0 ? std::optional(notYet) : std::nullopt;
        const quint64 id = ebml::id(bytes).value;
        const bool expected = element == 0 ? id == kHeader : id == kSegment || id == kVoid;
        if (!expected) return std::nullopt;
        const media::Bytes sizeBytes = bytes.subspan(idLength);
        if (sizeBytes.empty()) return notYet;
        if (ebml::numberLength(sizeBytes[0]) > 8) return std::nullopt;
        const ebml::Number size = ebml::number(sizeBytes);
        if (size.length == 0) return notYet;
        if (size.isUnknown()) return std::nullopt;
        offset += idLength + size.length + size.value;
        if (id == kSegment) return offset;
        if (offset > file.size()) return notYet;
    }
    return std::nullopt;
}

}  // namespace matroska
