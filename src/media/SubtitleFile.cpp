#include "media/SubtitleFile.h"

#include "media/FileReader.h"
#include "media/VisibleText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

namespace media {

namespace {

constexpr std::size_t kMostEvents = 50000;
constexpr std::size_t kLongestLine = 4095;  // Longer ones are cut in pieces of this length.
constexpr std::size_t kLongestEvent = 65536;
constexpr double kMicroDvdRate = 24000.0 / 1001;
constexpr int kLookedAtForRate = 3;  // Lines of MicroDVD

/// The text of a file in UTF-8 or as it is, byte by byte and line by line.
class TextReader {
public:
    explicit TextReader(File& file) : m_bytes(file) {
        const Bytes mark = m_bytes.at(0, 3);
        const auto isMark = [&](std::initializer_list<int> bytes) {
            return mark.size() >= bytes.size() && std::equal(bytes.begin(), bytes.end(), mark.begin());
        };
        if (isMark({0xEF, 0xBB, 0xBF})) m_position = 3;
        if (isMark({0xFF, 0xFE})) m_unit = LittleEndian;
        if (isMark({0xFE, 0xFF})) m_unit = BigEndian;
        if (m_unit != Byte) m_position = 2;
        m_begin = m_position;
    }

    void rewind() {
        m_position = m_begin;
        m_pending.clear();
    }
    /// -1 at the end.
    int next() {
        if (m_pending.empty() && !decode()) return -1;
        const auto byte = static_cast<unsigned char>(m_pending.back());
        m_pending.pop_back();
        return byte;
    }
    int peek() {
        if (m_pending.empty() && !decode()) return -1;
        return static_cast<unsigned char>(m_pending.back());
    }
    /// A line end is LF, CR or any number of CR in front of LF. Null at the end.
    bool readLine(std::string& line) {
        line.clear();
        if (peek() < 0) return false;
        while (line.size() < kLongestLine) {
            const int byte = next();
            if (byte < 0) return true;
            if (byte == '\r' || byte == '\n') break;
            m_hasZero = m_hasZero || byte == 0;
            line += static_cast<char>(byte);
        }
        while (peek() == '\r')
            next();
        if (peek() == '\n') next();
        return true;
    }
    /// Zero bytes end the text for the tool.
    bool hasZero() const { return m_hasZero; }

private:
    enum Unit { Byte, LittleEndian, BigEndian };

    quint32 unit() {
        const Bytes bytes = m_bytes.at(m_position, 2);
        if (bytes.size() < 2) return 0;
        m_position += 2;
        const auto value = static_cast<quint32>(bigEndian(bytes));
        return m_unit == BigEndian ? value : (value & 0xFFU) << 8U | value >> 8U;
    }
    bool decode() {
        if (m_unit == Byte) {
            const Bytes byte = m_bytes.at(m_position, 1);
            if (byte.empty()) return false;
            ++m_position;
            m_pending.assign(1, static_cast<char>(byte[0]));
            return true;
        }
        if (m_position + 2 > m_bytes.size() || m_bytes.at(m_position, 2).size() < 2) return false;
        quint32 character = unit();
        if (character >= 0xD800 && character < 0xDC00)
            character = 0x10000 + ((character & 0x3FFU) << 10U | (unit() & 0x3FFU));
        // The last byte first, as they are taken from the end.
        m_pending.clear();
        if (character < 0x80) {
            m_pending += static_cast<char>(character);
            return true;
        }
        unsigned lead = 0x1F;
        quint32 rest = character;
        for (; rest > lead || m_pending.empty(); rest >>= 6U) {
            m_pending += static_cast<char>(0x80U | (rest & 0x3FU));
            if (m_pending.size() > 1) lead >>= 1U;
        }
        m_pending += static_cast<char>((0xFFU & ~(lead << 1U | 1U)) | rest);
        return true;
    }

    FileReader m_bytes;
    Unit m_unit = Byte;
    quint64 m_begin = 0;
    quint64 m_position = 0;
    std::string m_pending;
    bool m_hasZero = false;
};

struct Event {
    qint64 start = 0;     // In units of the format.
    qint64 duration = 0;  // Negative: until the next one.
    std::size_t hash = 0;
    bool visible = false;
};

class Events {
public:
    void add(qint64 start, qint64 duration, std::string_view text) {
        if (m_events.size() >= kMostEvents) {
            m_tooMany = true;
            return;
        }
        VisibleText seen;
        const Bytes bytes(reinterpret_cast<const unsigned char*>(text.data()), text.size());
        const bool visible = seen.feed(bytes) || seen.found();
        m_events.push_back({start, duration, std::hash<std::string_view>()(text), visible});
    }
    /// `unit`: seconds. As the tool does: ordered by the start, without repetitions.
    std::optional<std::vector<Line>> lines(double unit) {
        if (m_tooMany) return std::nullopt;
        std::ranges::stable_sort(m_events, {}, &Event::start);
        for (std::size_t i = 0; i + 1 < m_events.size(); ++i) {
            if (m_events[i].duration < 0) m_events[i].duration = m_events[i + 1].start - m_events[i].start;
        }
        const auto repeats = [](const Event& one, const Event& other) {
            return one.start == other.start && one.duration == other.duration && one.hash == other.hash;
        };
        m_events.erase(std::unique(m_events.begin(), m_events.end(), repeats), m_events.end());
        std::vector<Line> result;
        result.reserve(m_events.size());
        for (const Event& event : m_events) {
            const double duration = static_cast<double>(std::max<qint64>(event.duration, 0)) * unit;
            result.push_back(
                {static_cast<double>(event.start) * unit, static_cast<float>(duration), event.visible});
        }
        return result;
    }

private:
    std::vector<Event> m_events;
    bool m_tooMany = false;
};

qint64 milliseconds(int hours, int minutes, int seconds, int rest) {
    return ((qint64{hours} * 60 + minutes) * 60 + seconds) * 1000 + rest;
}

/// A time line that is followed by lines of text.
struct Timing {
    qint64 start = 0;  // Milliseconds
    qint64 duration = 0;
};
using ReadTiming = bool (*)(const char* line, Timing& timing);

bool readSubRipTiming(const char* line, Timing& timing) {
    int h1 = 0, m1 = 0, s1 = 0, f1 = 0, h2 = 0, m2 = 0, s2 = 0, f2 = 0;
    // NOLINTNEXTLINE(cert-err34-c)
    if (std::sscanf(line, "%9d:%9d:%9d%*1[,.]%9d --> %9d:%9d:%9d%*1[,.]%9d", &h1, &m1, &s1, &f1, &h2, &m2,
                    &s2, &f2) < 8)
        return false;
    timing.start = milliseconds(h1, m1, s1, f1);
    timing.duration = milliseconds(h2, m2, s2, f2) - timing.start;
    return true;
}

/// Whether the line begins with a number that is not negative; `whole`: and has nothing else.
bool isNumber(const std::string& line, bool whole) {
    char* end = nullptr;
    const long number = std::strtol(line.c_str(), &end, 10);
    return number >= 0 && end != line.c_str() && (!whole || *end == '\0');
}

/// The number in front of an event cannot be told from text until the line behind it is known.
void readSubRip(TextReader& text, Events& events) {
    std::string line;
    std::string held;
    std::string payload;
    std::optional<Timing> current;
    const auto add = [&](bool withHeld) {
        if (withHeld && !held.empty()) payload += held + '\n';
        held.clear();
        while (payload.ends_with('\n'))
            payload.pop_back();
        if (!payload.empty()) events.add(current->start, current->duration, payload);
        payload.clear();
    };
    while (text.readLine(line)) {
        if (line.empty()) continue;
        Timing timing;
        if (readSubRipTiming(line.c_str(), timing)) {
            if (current) add(payload.empty() && !isNumber(held, true));
            held.clear();
            current = timing;
            continue;
        }
        if (!current || payload.size() > kLongestEvent) continue;
        if (!held.empty()) payload += held + '\n';
        held.clear();
        if (isNumber(line, false))
            held = line;
        else
            payload += line + '\n';
    }
    if (current) add(true);
}

void readAss(TextReader& text, Events& events) {
    constexpr int kFieldsBeforeText = 6;  // Style, name, three margins, effect.
    std::string line;
    while (text.readLine(line)) {
        int h1 = 0, m1 = 0, s1 = 0, f1 = 0, h2 = 0, m2 = 0, s2 = 0, f2 = 0, read = 0;
        // NOLINTNEXTLINE(cert-err34-c)
        if (std::sscanf(line.c_str(), "Dialogue: %*[^,],%9d:%9d:%9d%*c%9d,%9d:%9d:%9d%*c%9d,%n", &h1, &m1,
                        &s1, &f1, &h2, &m2, &s2, &f2, &read) < 8)
            continue;
        std::string_view rest(line);
        rest.remove_prefix(static_cast<std::size_t>(read));
        for (int i = 0; i < kFieldsBeforeText; ++i)
            rest = rest.substr(std::min(rest.find(',') + 1, rest.size()));
        const qint64 start = milliseconds(h1, m1, s1, f1 * 10);
        events.add(start, milliseconds(h2, m2, s2, f2 * 10) - start, rest);
    }
}

/// Null: no MicroDVD, or a rate that the tool might read otherwise.
std::optional<double> readMicroDvd(TextReader& text, Events& events) {
    double rate = kMicroDvdRate;
    std::string line;
    for (int number = 0; text.readLine(line);) {
        if (line.empty()) return rate;  // The tool stops there, too.
        if (number++ < kLookedAtForRate) {
            int frame = 0;
            double declared = 0;
            // NOLINTBEGIN(cert-err34-c)
            const bool isRate = std::sscanf(line.c_str(), "{%9d}{}%6lf", &frame, &declared) == 2 ||
                                std::sscanf(line.c_str(), "{%9d}{%*d}%6lf", &frame, &declared) == 2;
            // NOLINTEND(cert-err34-c)
            if (isRate && frame <= 1 && declared > 3 && declared < 100) {
                rate = declared;
                continue;
            }
            if (line.starts_with("{DEFAULT}{}")) continue;
        }
        int start = 0;
        int end = 0;
        char after = 0;
        const std::size_t first = line.find('}');
        const std::size_t second = first == std::string::npos ? first : line.find('}', first + 1);
        if (second == std::string::npos || second + 1 == line.size()) continue;
        // NOLINTBEGIN(cert-err34-c)
        if (std::sscanf(line.c_str(), "{%9d}{%c", &start, &after) != 2) return std::nullopt;
        const bool hasEnd = std::sscanf(line.c_str(), "{%9d}{%9d}", &start, &end) == 2;
        // NOLINTEND(cert-err34-c)
        events.add(start, hasEnd ? end - start : -1, std::string_view(line).substr(second + 1));
    }
    return rate;
}

/// An event is what stands between two SYNC tags.
void readSami(TextReader& text, Events& events) {
    constexpr std::string_view kSync = "<sync";
    std::string piece;
    std::optional<qint64> start;
    const auto finish = [&] {
        if (start) events.add(*start, -1, piece);
        piece.clear();
    };
    std::string tag;
    bool inTag = false;
    for (int byte = text.next(); byte >= 0; byte = text.next()) {
        const auto character = static_cast<char>(byte);
        if (character == '<') {
            inTag = true;
            tag.clear();
        }
        if (!inTag) {
            if (piece.size() < kLongestEvent) piece += character;
            continue;
        }
        if (tag.size() < kLongestLine)
            tag += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : character;
        if (character != '>') continue;
        inTag = false;
        if (!tag.starts_with(kSync)) {
            if (tag.starts_with("</body")) break;
            continue;
        }
        finish();
        const std::size_t attribute = tag.find("start=");
        const char* number = attribute == std::string::npos ? "" : tag.c_str() + attribute + 6;
        if (*number == '"' || *number == '\'') ++number;
        start = std::strtol(number, nullptr, 10);
    }
    finish();
}

/// Lines below a time line; `isHeader`: lines that are not text.
template <typename IsHeader>
void readTimedLines(TextReader& text, Events& events, ReadTiming readTiming, const IsHeader& isHeader) {
    std::string line;
    std::string payload;
    std::optional<Timing> current;
    const auto finish = [&] {
        if (current && !payload.empty()) events.add(current->start, current->duration, payload);
        payload.clear();
    };
    while (text.readLine(line)) {
        Timing timing;
        if (readTiming(line.c_str(), timing)) {
            finish();
            current = timing;
        } else if (line.empty()) {
            finish();
            current.reset();
        } else if (current && !isHeader(line) && payload.size() < kLongestEvent) {
            payload += line + '\n';
        }
    }
    finish();
}

bool readSubViewerTiming(const char* line, Timing& timing) {
    int h1 = 0, m1 = 0, s1 = 0, f1 = 0, h2 = 0, m2 = 0, s2 = 0, f2 = 0, n1 = 0, n2 = 0;
    // NOLINTNEXTLINE(cert-err34-c)
    if (std::sscanf(line, "%9d:%9d:%9d.%n%9d%n,%9d:%9d:%9d.%9d", &h1, &m1, &s1, &n1, &f1, &n2, &h2, &m2, &s2,
                    &f2) < 8)
        return false;
    const int scale = n2 - n1 == 2 ? 10 : n2 - n1 == 1 ? 100 : 1;
    timing.start = milliseconds(h1, m1, s1, f1 * scale);
    timing.duration = milliseconds(h2, m2, s2, f2 * scale) - timing.start;
    return true;
}

bool readWebVttTiming(const char* line, Timing& timing) {
    const auto time = [](const char* text, qint64& value) {
        int h = 0, m = 0, s = 0, f = 0;
        // NOLINTBEGIN(cert-err34-c)
        const bool isFull = std::sscanf(text, "%9d:%9d:%9d.%9d", &h, &m, &s, &f) == 4;
        if (!isFull) h = 0;
        if (!isFull && std::sscanf(text, "%9d:%9d.%9d", &m, &s, &f) != 3) return false;
        // NOLINTEND(cert-err34-c)
        value = milliseconds(h, m, s, f);
        return true;
    };
    const char* arrow = std::strstr(line, "-->");
    qint64 end = 0;
    if (!arrow || !time(line, timing.start)) return false;
    arrow += 3;
    if (!time(arrow + std::strspn(arrow, " \t"), end)) return false;
    timing.duration = end - timing.start;
    return true;
}

enum class Format { Unknown, SubRip, Ass, MicroDvd, Sami, SubViewer, WebVtt };

Format formatOf(TextReader& text) {
    std::string line;
    Timing timing;
    int number = 0;
    int microDvd = 0;
    bool isNumbered = false;
    constexpr int kLookedAt = 3;
    while (number < kLookedAt && text.readLine(line)) {
        if (line.empty()) continue;
        ++number;
        char after = 0;
        if (line.starts_with("WEBVTT") && number == 1) return Format::WebVtt;
        if (line.starts_with("[Script Info]")) return Format::Ass;
        if (line.starts_with("[INFORMATION]") || readSubViewerTiming(line.c_str(), timing))
            return Format::SubViewer;
        if (number == 1 && (line.starts_with("<SAMI") || line.starts_with("<sami"))) return Format::Sami;
        const bool isTiming =
            readSubRipTiming(line.c_str(), timing) && line.find(" --> ") != std::string::npos;
        if (number == 2 && isNumbered && isTiming) return Format::SubRip;
        isNumbered = number == 1 && isNumber(line, true);
        // NOLINTBEGIN(cert-err34-c)
        if (std::sscanf(line.c_str(), "{%*d}{}%c", &after) == 1 ||
            std::sscanf(line.c_str(), "{%*d}{%*d}%c", &after) == 1 ||
            std::sscanf(line.c_str(), "{DEFAULT}{}%c", &after) == 1)
            ++microDvd;
        // NOLINTEND(cert-err34-c)
    }
    return microDvd > 0 && microDvd == number ? Format::MicroDvd : Format::Unknown;
}

}  // namespace

std::optional<std::vector<Line>> readSubtitleFile(const QString& path, std::stop_token stop) {
    File file(path, std::move(stop));
    TextReader text(file);
    const Format format = formatOf(text);
    text.rewind();
    Events events;
    double unit = 0.001;
    const auto never = [](const std::string&) { return false; };
    switch (format) {
        case Format::Unknown:
            return std::nullopt;
        case Format::SubRip:
            readSubRip(text, events);
            break;
        case Format::Ass:
            readAss(text, events);
            break;
        case Format::MicroDvd:
            if (const std::optional<double> rate = readMicroDvd(text, events))
                unit = 1 / *rate;
            else
                return std::nullopt;
            break;
        case Format::Sami:
            readSami(text, events);
            break;
        case Format::SubViewer:
            readTimedLines(text, events, readSubViewerTiming,
                           [](const std::string& line) { return line.starts_with('['); });
            break;
        case Format::WebVtt:
            readTimedLines(text, events, readWebVttTiming, never);
            break;
    }
    if (text.hasZero() || file.hasFailed() || file.isCancelled()) return std::nullopt;
    return events.lines(unit);
}

}  // namespace media
