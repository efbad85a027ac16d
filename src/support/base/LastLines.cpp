#include "support/base/LastLines.h"

#include "support/base/Format.h"

#include <QDateTime>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <unistd.h>

namespace {

constexpr size_t kLines = 10;
constexpr size_t kLongest = 1000;  // bytes, without the newline

struct Line {
    std::atomic<size_t> size = 0;
    std::array<char, kLongest + 1> text{};
};

std::array<Line, kLines> theLines;
std::atomic<std::uint64_t> theCount =
    0;  ///< Number of lines so far; modulo the capacity, the index of the next one.
std::mutex theWriter;

}  // namespace

void lastlines::add(int level, const QString& message) {
    QByteArray bytes = makeString("%@ <%i> %@", QDateTime::currentDateTime(), level, message).toUtf8();
    if (static_cast<size_t>(bytes.size()) > kLongest) {
        qsizetype end = kLongest;
        while ((bytes[end] & 0xC0) == 0x80)  // Never cut inside a UTF-8 character.
            --end;
        bytes.truncate(end);
    }
    bytes.replace('\n', ' ').append('\n');

    const std::lock_guard lock(theWriter);
    Line& line = theLines[theCount % kLines];
    line.size = 0;  // If a crash interrupts this, it finds no line instead of parts of two.
    std::memcpy(line.text.data(), bytes.constData(), static_cast<size_t>(bytes.size()));
    line.size = static_cast<size_t>(bytes.size());
    ++theCount;
}

void lastlines::write(int file) {
    const std::uint64_t count = theCount;
    for (std::uint64_t i = count; i < count + kLines; ++i) {
        const Line& line = theLines[i % kLines];
        [[maybe_unused]] const auto written = ::write(file, line.text.data(), line.size);
    }
}
