#include "media/Ebml.h"

#include <algorithm>

namespace ebml {

using media::Bytes;
using media::FileReader;

namespace {

Number read(Bytes bytes, unsigned longest, bool withMarker) {
    if (bytes.empty()) return {};
    const unsigned length = numberLength(bytes[0]);
    if (length > longest || length > bytes.size()) return {};
    const quint64 value = media::bigEndian(bytes.first(length));
    return {withMarker ? value : value & ((quint64{1} << (7 * length)) - 1), length};
}

}  // namespace

Number id(Bytes bytes) {
    return read(bytes, 4, true);
}

Number number(Bytes bytes) {
    return read(bytes, 8, false);
}

Element elementAt(FileReader& bytes, quint64 position) {
    const Bytes header = bytes.at(position, kLongestHeader);
    const Number itsId = id(header);
    if (itsId.length == 0) return {};
    const Number size = number(header.subspan(itsId.length));
    if (size.length == 0) return {};
    return {static_cast<quint32>(itsId.value), position, position + itsId.length + size.length, size.value,
            size.isUnknown()};
}

quint64 unsignedValue(FileReader& bytes, const Element& element) {
    return bytes.number(element.data, std::min<quint64>(element.size, 8));
}

double floatValue(FileReader& bytes, const Element& element) {
    const quint64 bits = unsignedValue(bytes, element);
    if (element.size == 4) return static_cast<double>(std::bit_cast<float>(static_cast<quint32>(bits)));
    return element.size == 8 ? std::bit_cast<double>(bits) : 0;
}

}  // namespace ebml
