#include "probe/ReportParser.h"

#include "settings/Keys.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"

#include <QRegularExpression>

namespace {

using text::piece;

QStringView pieceOrEmpty(QStringView text, QStringView separator, qsizetype index) {
    return piece(text, separator, index).value_or(QStringView());
}

/// The time before the fraction; empty if the line has none.
std::optional<QStringView> durationText(QStringView line) {
    const auto after = piece(line, u"Duration: ", 1);
    if (!after) return std::nullopt;
    return piece(*after, u".", 0);
}

/// Empty if there are fewer than three fields.
std::optional<qint32> secondsOf(QStringView duration) {
    const auto fields = text::split(duration, u":");
    if (fields.size() < 3) return std::nullopt;
    const qint64 seconds = qint64{text::integerValue(fields[0])} * 3600 +
                           qint64{text::integerValue(fields[1])} * 60 + text::integerValue(fields[2]);
    return static_cast<qint32>(seconds);
}

/// The first word after `mark`, up to a comma: the name of the codec.
QString codecAfter(QStringView line, QStringView mark) {
    const QStringView field = pieceOrEmpty(pieceOrEmpty(line, mark, 1), u",", 0);
    return pieceOrEmpty(field, u" ", 0).toString();
}

/// The stream line without the container's stream number, "Stream #0:1[0x101](eng)", which would be parsed as
/// part of the language. Other text in such brackets is the language.
QString withoutContainerID(QStringView line) {
    static const QRegularExpression group(QStringLiteral("^(\\s*Stream #\\d+:\\d+)\\[0x[0-9a-fA-F]+\\]"));
    QString result = line.toString();
    return result.replace(group, QStringLiteral("\\1"));
}

/// A stream line with the lines that follow it. Only the stream line identifies the stream; the others are
/// searched for marks.
struct Block {
    QStringView streamLine;
    QList<QStringView> lines;  ///< All lines; the stream line is the first.

    bool contains(QStringView mark) const {
        return std::any_of(lines.cbegin(), lines.cend(),
                           [&](QStringView line) { return line.contains(mark); });
    }
    /// Whether the block contains the mark if blanks are ignored.
    bool containsWithoutBlanks(QStringView mark) const {
        return std::any_of(lines.cbegin(), lines.cend(), [&](QStringView line) {
            return line.size() >= mark.size() && line.toString().remove(u' ').contains(mark);
        });
    }
};

class Parser {
public:
    Parser(const settings::Snapshot& chosen, const QString& fileName)
        : m_chosen(chosen), m_fileName(fileName) {}

    ReportFacts parse(QStringView report) {
        for (const Block& block : blocksOf(report)) {
            readBlock(block);
            if (m_facts.rejected) return m_facts;
        }
        if (m_facts.resolution)
            add(verdicts::onResolution(m_fileName, *m_facts.resolution, m_referenceFrames));
        if (!m_facts.videoTrackID) reject(verdicts::notAMovie(m_fileName));
        return m_facts;
    }

private:
    /// Groups the lines by streams; lines before the first stream are ignored. Duration lines are parsed
    /// here.
    QList<Block> blocksOf(QStringView report) {
        QList<Block> blocks;
        const auto allLines = text::lines(report);
        for (const QStringView line : allLines) {
            const QStringView trimmed = text::trimmedOfWhitespaceAndNewlines(line);
            if (trimmed.startsWith(u"Stream")) {
                blocks.append({line, {line}});
            } else if (trimmed.startsWith(u"Duration")) {
                readDuration(line);
            } else if (!blocks.isEmpty()) {
                blocks.last().lines.append(line);
            }
        }
        return blocks;
    }

    void readDuration(QStringView line) {
        const auto duration = durationText(line);
        if (!duration) return;
        m_facts.duration = duration->toString();
        const auto seconds = secondsOf(*duration);
        if (!seconds) return;
        m_facts.runtimeSeconds = seconds;
        if (const auto bitrate = piece(line, u"bitrate: ", 1)) m_facts.bitrate = bitrate->toString();
    }

    void readBlock(const Block& block) {
        if (block.contains(u"comment         : Movie/video screen capture")) return;
        const QString line = withoutContainerID(block.streamLine);
        const QStringView number = pieceOrEmpty(line, u":", 1);
        const QStringView language = text::trimmedOf(number, u"0123456789()");
        const int stream = text::integerValue(text::trimmedTo(number, u"0123456789"));

        if (!m_facts.videoTrackID && line.contains("Video: ") &&
            !block.containsWithoutBlanks(u"mimetype:image/")) {
            readVideo(line, stream);
        } else if (line.contains("Audio: ")) {
            readAudio(line, stream, language.isEmpty() ? QStringView(u"unk") : language);
        } else if (line.contains("Subtitle: ")) {
            readSubtitle(line, stream);
        }
    }

    void readVideo(const QString& line, int stream) {
        for (const QStringView word : text::split(line, u" ")) {
            if (word.contains(u'x')) m_facts.resolution = text::trimmedTo(word, u"0123456789x").toString();
        }
        const QString codec = codecAfter(line, u"Video: ");
        if (verdicts::isRejectedVideoCodec(codec)) {
            reject(verdicts::invalidCodec(m_fileName, codec));
            return;
        }
        add(verdicts::onVideo(m_fileName, codec, line));
        if (const auto after = piece(line, u"|refs: ", 1))
            m_referenceFrames = text::integerValue(pieceOrEmpty(*after, u"|", 0));
        m_facts.videoTrackID = stream;
        m_facts.videoTrackCodec = codec;
    }

    void readAudio(const QString& line, int stream, QStringView language) {
        QString codec = codecAfter(line, u"Audio: ");
        const bool surround = text::containsAny(line, {", 5.1", ", 6.1", ", 7.1"});
        if (text::containsAny(line, {"(HE-AAC)", "(HE-AACv2)"})) {
            if (m_chosen.value(settings::HEAACConvert)) {
                codec = "he-aac";
            } else {
                m_facts.verdicts.push_back(verdicts::heaac(m_fileName));
            }
        }
        if (codec == u"eac3" && !m_chosen.value(settings::EAC3Convert)) {
            m_facts.verdicts.push_back(verdicts::eac3(m_fileName, surround));
            codec = "ac3";
        }
        if (line.contains("aac (Main)") && !m_chosen.value(settings::DontConvertAACMain)) codec = "aac-main";
        const qsizetype hertz = line.indexOf(" Hz");
        const QStringView beforeHertz = QStringView(line).left(qMax(hertz, 0));
        const int sampleRate = text::integerValue(text::split(beforeHertz, u", ").last());
        m_facts.audioTracks.append(AudioEntry::make(stream, text::trimmedOfWhitespace(language).toString(),
                                                    codec, surround, sampleRate));
    }

    void readSubtitle(const QString& line, int stream) {
        ++m_facts.subtitleCount;
        // "ass" is excluded: converted to plain text, styled subtitles are full of style codes. Tools from
        // version 7 on name its decoder, too: "ass (ssa)".
        if (codecAfter(line, u"Subtitle: ") != u"ass" &&
            text::containsAny(line, {"ssa", "subrip", "srt", "sami", "subviewer", "microdvd"}))
            m_facts.subtitleTrackIDs.append(stream);
    }

    void add(std::vector<Verdict> verdicts) {
        for (Verdict& verdict : verdicts)
            m_facts.verdicts.push_back(std::move(verdict));
    }

    void reject(Verdict verdict) {
        m_facts.rejected = true;
        m_facts.verdicts.push_back(std::move(verdict));
    }

    const settings::Snapshot m_chosen;
    const QString m_fileName;
    ReportFacts m_facts;
    int m_referenceFrames = 0;
};

}  // namespace

QString ReportFacts::informationString() const {
    return Texts::tr("Duration: %1  Bitrate: %2  Resolution: %3  Audiotracks: %4 (%5)")
        .arg(describe(duration), describe(bitrate), describe(resolution), QString::number(audioTracks.size()),
             QString::number(subtitleCount));
}

ReportFacts parseReport(const QString& report, const settings::Snapshot& chosen, const QString& fileName) {
    ReportFacts facts = Parser(chosen, fileName).parse(report);
    if (!facts.rejected) facts.contents = parseContents(report, fileName);
    return facts;
}

qint32 durationInReport(const QString& report) {
    std::optional<QStringView> only;
    const auto allLines = text::lines(report);
    for (const QStringView line : allLines) {
        if (!line.contains(u"Duration: ")) continue;
        if (only) return -1;
        only = line;
    }
    if (!only) return -1;
    return secondsOf(*durationText(*only)).value_or(-1);
}
