#include "probe/Streams.h"

#include "support/base/Text.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace {

/// The pieces between separators that stand outside of parentheses and brackets.
QList<QStringView> fieldsOf(QStringView text) {
    QList<QStringView> fields;
    int depth = 0;
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text[at];
        if (c == u'(' || c == u'[') {
            ++depth;
        } else if (c == u')' || c == u']') {
            depth = std::max(depth - 1, 0);
        } else if (c == u',' && depth == 0) {
            fields.append(text.sliced(begin, at - begin).trimmed());
            begin = at + 1;
        }
    }
    fields.append(text.sliced(begin).trimmed());
    return fields;
}

/// The contents of the groups in parentheses; those of inner groups belong to the outer one.
QList<QStringView> groupsOf(QStringView text) {
    QList<QStringView> groups;
    int depth = 0;
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == u'(' && depth++ == 0) begin = at + 1;
        if (text[at] == u')' && depth > 0 && --depth == 0) groups.append(text.sliced(begin, at - begin));
    }
    return groups;
}

/// Decoders of other names than their codecs stand in the place of a profile, in small letters; the
/// container's tag has a number: "dts (dca) (DTS-HD MA) ([130][0][0][0] / 0x0082)".
QString profileIn(QStringView field) {
    for (const QStringView group : groupsOf(field)) {
        if (!group.isEmpty() && !group.front().isLower() && !group.contains(u" / 0x"))
            return group.toString();
    }
    return {};
}

/// Cuts the flags off the end of a stream line, such as " (default) (forced)", and returns them in order.
QStringList takeDispositions(QStringView& line) {
    static const QStringList known = {
        "default",          "dub",         "original",         "comment",         "lyrics",
        "karaoke",          "forced",      "attached pic",     "captions",        "descriptions",
        "metadata",         "dependent",   "hearing impaired", "visual impaired", "clean effects",
        "timed thumbnails", "still image", "non-diegetic",     "multilayer"};
    QStringList taken;
    while (line.endsWith(u')')) {
        const qsizetype open = line.lastIndexOf(u" (");
        if (open < 0) break;
        const qsizetype word = known.indexOf(line.sliced(open + 2).chopped(1));
        if (word < 0) break;
        taken.prepend(known[word]);
        line.truncate(open);
    }
    return taken;
}

int channelsOf(QStringView layout) {
    static constexpr std::array<std::pair<QStringView, int>, 9> kNames = {{{u"mono", 1},
                                                                           {u"stereo", 2},
                                                                           {u"downmix", 2},
                                                                           {u"binaural", 2},
                                                                           {u"quad", 4},
                                                                           {u"hexagonal", 6},
                                                                           {u"octagonal", 8},
                                                                           {u"cube", 8},
                                                                           {u"hexadecagonal", 16}}};
    const QStringView name = text::piece(layout, u"(", 0).value_or(layout).trimmed();
    for (const auto& [known, channels] : kNames) {
        if (name == known) return channels;
    }
    if (name.contains(u" channels")) return text::integerValue(name);
    qint64 channels = 0;
    for (const QStringView part : text::split(name, u"."))  // "5.1", "7.1.4"
        channels += text::integerValue(part);
    constexpr qint64 kMost = 64;
    return name.contains(u'.') && channels > 0 && channels <= kMost ? static_cast<int>(channels) : 0;
}

void readPicture(MovieStream& stream, const QList<QStringView>& fields) {
    for (const QStringView field : fields) {
        // "yuv420p(tv, bt709, top first)"
        if (field.contains(u"top first") || field.contains(u"bottom first") || field.contains(u"coded first"))
            stream.isInterlaced = true;
        // "1920x1080 [SAR 1:1 DAR 16:9]"
        const auto numbers = text::split(text::piece(field, u" ", 0).value_or(field), u"x");
        const bool isSize =
            numbers.size() == 2 && std::ranges::all_of(numbers, [](QStringView number) {
                return !number.isEmpty() && std::ranges::all_of(number, [](QChar c) { return c.isDigit(); });
            });
        if (stream.width > 0 || !isSize) continue;
        stream.width = text::integerValue(numbers[0]);
        stream.height = text::integerValue(numbers[1]);
    }
}

void readSound(MovieStream& stream, const QList<QStringView>& fields) {
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (!fields[i].endsWith(u" Hz")) continue;
        stream.sampleRate = text::integerValue(fields[i]);
        stream.channelLayout = fields.value(i + 1).toString();
        stream.channels = channelsOf(stream.channelLayout);
        return;
    }
}

/// Seconds of "01:42:17.530000000"; empty: it is no time.
std::optional<double> secondsOf(QStringView time) {
    const auto fields = text::split(time, u":");
    if (fields.size() != 3 || fields[0].isEmpty() || !fields[0].front().isDigit()) return std::nullopt;
    constexpr double kHour = 3600;
    constexpr double kMinute = 60;
    return text::integerValue(fields[0]) * kHour + text::integerValue(fields[1]) * kMinute +
           text::doubleValue(fields[2]);
}

qsizetype indentationOf(QStringView line) {
    qsizetype at = 0;
    while (at < line.size() && line[at] == u' ')
        ++at;
    return at;
}

class Parser {
public:
    explicit Parser(MovieContents& contents) : m_contents(contents) {}

    void read(QStringView line) {
        const qsizetype indentation = indentationOf(line);
        if (indentation > m_tagsAreBeyond) {
            readTag(line, indentation);
            return;
        }
        m_tagsAreBeyond = kNoTags;
        const QStringView text = line.sliced(indentation);
        if (text == u"Metadata:") {
            m_tagsAreBeyond = indentation;
            m_nameAt = -1;
            m_tag = Tag::Other;
        } else if (text == u"Side data:") {
            m_tagsAreBeyond = indentation;
            m_owner = Owner::Other;
        } else if (text.startsWith(u"Input #")) {
            m_owner = Owner::Movie;
            const QStringView format = text.mid(text.indexOf(u',') + 1);
            m_contents.formatName = format.left(qMax(format.indexOf(u", from '"), 0)).trimmed().toString();
        } else if (text.startsWith(u"Chapter #")) {
            m_owner = Owner::Other;
            ++m_contents.chapterCount;
        } else if (text.startsWith(u"Stream #")) {
            readStream(text.sliced(QStringView(u"Stream #").size()));
        } else if (text.startsWith(u"Program ") || text.startsWith(u"Stream group")) {
            m_owner = Owner::Other;
        }
    }

private:
    static constexpr qsizetype kNoTags = std::numeric_limits<qsizetype>::max();
    enum class Owner { Movie, Stream, Other };
    enum class Tag { Other, Title };

    /// "0:1[0x101](eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 448 kb/s (default)"
    void readStream(QStringView text) {
        m_owner = Owner::Other;
        const QStringView number = text.mid(text.indexOf(u':') + 1);
        const qsizetype end = number.indexOf(u": ");
        if (end <= 0 || !number.front().isDigit()) return;
        MovieStream stream;
        stream.index = text::integerValue(number);
        if (m_indexes.contains(stream.index)) return;  // Programs may share a stream.
        const QStringView head = number.left(end);
        if (head.endsWith(u')')) {
            const qsizetype open = head.indexOf(u'(');
            if (open >= 0) stream.language = head.sliced(open + 1).chopped(1).toString();
        }
        QStringView description = number.sliced(end + 2);
        const QStringView kind = description.left(qMax(description.indexOf(u": "), 0));
        stream.kind = kindOf(kind);
        stream.dispositions = takeDispositions(description);
        const auto fields = fieldsOf(description.mid(kind.isEmpty() ? 0 : kind.size() + 2));
        stream.codec = text::piece(fields.first(), u" ", 0)->toString();
        stream.profile = profileIn(fields.first());
        stream.isCover = stream.dispositions.contains(u"attached pic");
        if (stream.kind == StreamKind::Video || stream.kind == StreamKind::Subtitle)
            readPicture(stream, fields.sliced(1));
        if (stream.kind == StreamKind::Audio) readSound(stream, fields.sliced(1));
        for (const QStringView field : fields) {
            constexpr qint64 kKilo = 1000;
            if (field.endsWith(u" kb/s") && field.front().isDigit())
                stream.bitRate = qint64{text::integerValue(field)} * kKilo;
        }
        m_owner = Owner::Stream;
        m_indexes.insert(stream.index);
        m_contents.streams.append(stream);
    }

    static StreamKind kindOf(QStringView word) {
        if (word == u"Video") return StreamKind::Video;
        if (word == u"Audio") return StreamKind::Audio;
        if (word == u"Subtitle") return StreamKind::Subtitle;
        if (word == u"Attachment") return StreamKind::Attachment;
        return StreamKind::Data;
    }

    /// "  title           : Director's commentary": the name is filled up to 16 characters. Further lines of
    /// the value have no name.
    void readTag(QStringView line, qsizetype indentation) {
        constexpr qsizetype kNameWidth = 16;
        const bool continues =
            m_nameAt >= 0 && indentation == m_nameAt + kNameWidth && line[indentation] == u':';
        const qsizetype nameAt = continues ? m_nameAt : indentation;
        qsizetype colon = line.indexOf(u": ", std::min(nameAt + kNameWidth, line.size()));
        if (colon < 0) colon = line.indexOf(u':', nameAt);
        if (colon < 0) return;
        const QString value = line.mid(colon + 2).trimmed().toString();
        if (continues) {
            if (m_tag == Tag::Title) *m_title += u'\n' + value;
            return;
        }
        m_nameAt = nameAt;
        take(line.sliced(nameAt, colon - nameAt).trimmed(), value);
    }

    void take(QStringView name, const QString& value) {
        m_tag = Tag::Other;
        const auto is = [name](QStringView wanted) {
            return name.compare(wanted, Qt::CaseInsensitive) == 0 ||
                   (name.endsWith(u"-eng") && name.chopped(4).compare(wanted, Qt::CaseInsensitive) == 0);
        };
        if (m_owner == Owner::Other) return;
        if (is(u"title")) {
            m_title = m_owner == Owner::Movie ? &m_contents.title : &m_contents.streams.last().title;
            *m_title = value;
            m_tag = Tag::Title;
        }
        if (m_owner == Owner::Movie) return;
        MovieStream& stream = m_contents.streams.last();
        if (is(u"NUMBER_OF_FRAMES")) {
            bool isNumber = false;
            const quint64 count = value.toULongLong(&isNumber);
            if (isNumber) stream.frameCount = count;
        } else if (is(u"DURATION")) {
            stream.seconds = secondsOf(value);
        } else if (is(u"BPS") && stream.bitRate == 0) {
            stream.bitRate = std::max(value.toLongLong(), 0LL);
        } else if (is(u"mimetype")) {
            stream.mimeType = value;
            if (stream.kind == StreamKind::Video && value.startsWith(u"image/")) stream.isCover = true;
        } else if (is(u"filename")) {
            stream.fileName = value;
        } else if (is(u"comment") && value == u"Movie/video screen capture") {
            stream.isCover = true;
        }
    }

    MovieContents& m_contents;
    QSet<int> m_indexes;
    qsizetype m_tagsAreBeyond = kNoTags;  ///< Lines that are indented further are metadata.
    qsizetype m_nameAt = -1;              ///< The indentation of the last tag.
    Owner m_owner = Owner::Other;         ///< What the metadata belong to.
    Tag m_tag = Tag::Other;               ///< The last tag, which the next line may continue.
    QString* m_title = nullptr;
};

}  // namespace

const MovieStream* MovieContents::stream(int index) const {
    const auto found =
        std::lower_bound(streams.cbegin(), streams.cend(), index,
                         [](const MovieStream& stream, int number) { return stream.index < number; });
    return found != streams.cend() && found->index == index ? &*found : nullptr;
}

void MovieContents::dropStatistics() {
    for (MovieStream& stream : streams) {
        stream.bitRate = 0;
        stream.frameCount.reset();
        stream.seconds.reset();
    }
}

void MovieContents::shareWith(const MovieContents& other) {
    const auto share = [](auto& mine, const auto& theirs) {
        if (mine == theirs) mine = theirs;
    };
    share(formatName, other.formatName);
    share(title, other.title);
    share(streams, other.streams);
    if (streams.isSharedWith(other.streams)) return;
    for (qsizetype i = 0; i < std::min(streams.size(), other.streams.size()); ++i) {
        for (const auto text : {&MovieStream::codec, &MovieStream::profile, &MovieStream::language,
                                &MovieStream::title, &MovieStream::channelLayout, &MovieStream::mimeType})
            share(streams[i].*text, other.streams[i].*text);
        share(streams[i].dispositions, other.streams[i].dispositions);
    }
}

MovieContents parseContents(QStringView report, QStringView fileName) {
    MovieContents contents;
    Parser parser(contents);
    // The name of the movie may contain line breaks.
    const QString endOfInput = QStringLiteral("%1':").arg(fileName);
    const qsizetype input = report.startsWith(u"Input #") ? 0 : report.indexOf(u"\nInput #") + 1;
    const qsizetype afterInput = report.indexOf(endOfInput, input);
    if (report.sliced(input).startsWith(u"Input #") && afterInput >= 0) {
        parser.read(report.sliced(input, afterInput - input));
        report = report.sliced(afterInput + endOfInput.size());
    }
    // No other newline characters: those of a title are in the middle of a line.
    for (const QStringView line : report.split(u'\n'))
        parser.read(line.endsWith(u'\r') ? line.chopped(1) : line);
    contents.streams.squeeze();  // It is kept for as long as the movie is in the queue.
    std::sort(contents.streams.begin(), contents.streams.end(),
              [](const MovieStream& a, const MovieStream& b) { return a.index < b.index; });
    return contents;
}
