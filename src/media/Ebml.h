#pragma once

#include "media/FileReader.h"

#include <bit>

/// EBML, the binary markup of Matroska: elements of an id, a size and contents.
namespace ebml {

struct Number {
    quint64 value = 0;
    unsigned length = 0;  ///< In bytes; 0: no number.

    /// All bits of the value set: a size that was not known when it was written.
    bool isUnknown() const { return value == (quint64{1} << (7 * length)) - 1; }
};

/// The number of leading zero bits in the first byte is the number of following bytes.
inline unsigned numberLength(unsigned char first) {
    return static_cast<unsigned>(std::countl_zero(first)) + 1;
}
/// An id includes the marker bit and has up to four bytes.
Number id(media::Bytes bytes);
/// A size, a track number, a lace size; up to eight bytes.
Number number(media::Bytes bytes);

constexpr std::size_t kLongestHeader = 12;  // An id and a size.

struct Element {
    quint32 id = 0;
    quint64 position = 0;  ///< Of the id.
    quint64 data = 0;      ///< Of the contents.
    quint64 size = 0;      ///< Of the contents.
    bool unknownSize = false;

    bool isValid() const { return id != 0; }
    /// For a known size. Cannot overflow: sizes have 56 bits.
    quint64 end() const { return data + size; }
};

/// Not valid where no id and size can be read.
Element elementAt(media::FileReader& bytes, quint64 position);

/// The contents of an element as a number; of no contents 0.
quint64 unsignedValue(media::FileReader& bytes, const Element& element);
/// IEEE 754 with four or eight bytes; else 0.
double floatValue(media::FileReader& bytes, const Element& element);

}  // namespace ebml
