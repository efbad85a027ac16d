#include "media/NalUnits.h"

#include <algorithm>

namespace media {

namespace {

constexpr quint64 kMostPadding = 64;

/// Whether such a unit may be in a stream.
bool isPossibleHeader(Bytes header, bool isHevc) {
    if ((header[0] & 0x80U) != 0) return false;  // forbidden_zero_bit
    if (!isHevc) return (header[0] & 0x1FU) != 0;
    return header.size() >= 2 && (header[1] & 0x07U) != 0;  // nuh_temporal_id_plus1
}

}  // namespace

NalFormat nalFormat(Bytes configuration, bool isHevc) {
    const std::size_t place = isHevc ? 21 : 4;
    // Version 1; what begins with a start code has no lengths. Some writers left HEVC's version at 0.
    if (configuration.size() <= place || configuration[0] > 1) return {};
    if (configuration[0] == 0 && (!isHevc || configuration[1] == 0)) return {};
    return {(configuration[place] & 3U) + 1, isHevc};
}

bool nalUnitsFill(FileReader& bytes, quint64 position, quint64 end, NalFormat format, Bytes prefix) {
    const quint64 length = prefix.size() + (end - position);
    std::array<unsigned char, 6> joined = {};
    for (quint64 offset = 0; offset < length;) {
        const std::size_t wanted = std::min<quint64>(format.lengthSize + 2, length - offset);
        Bytes header;
        if (offset >= prefix.size()) {
            header = bytes.at(position + (offset - prefix.size()), wanted);
        } else {
            const std::size_t stripped = std::min<quint64>(prefix.size() - offset, wanted);
            std::ranges::copy(prefix.subspan(offset, stripped), joined.begin());
            std::ranges::copy(bytes.at(position, wanted - stripped),
                              joined.begin() + static_cast<std::ptrdiff_t>(stripped));
            header = Bytes(joined).first(wanted);
        }
        if (header.size() < wanted) return bytes.file().isCancelled();
        const quint64 unit =
            header.size() > format.lengthSize ? bigEndian(header.first(format.lengthSize)) : 0;
        if (unit == 0)
            return offset > 0 && length - offset <= kMostPadding && offset >= prefix.size() &&
                   isZero(bytes, position + (offset - prefix.size()), end);
        if (unit > length - offset - format.lengthSize) return false;
        header =
            header.subspan(format.lengthSize, std::min<quint64>(unit, header.size() - format.lengthSize));
        if (!isPossibleHeader(header, format.isHevc)) return false;
        offset += format.lengthSize + unit;
    }
    return true;
}

}  // namespace media
