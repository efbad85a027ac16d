#include "fakes/Table.h"
#include "media/Summary.h"

namespace {

QByteArray hex(const char* text) {
    return QByteArray::fromHex(text);
}

QByteArray number(quint64 value, int bytes) {
    QByteArray result;
    for (int i = bytes - 1; i >= 0; --i)
        result += static_cast<char>(value >> (8 * i));
    return result;
}

QByteArray element(const char* id, const QByteArray& contents) {
    return hex(id) + number(quint64{1} << 28 | static_cast<quint64>(contents.size()), 4) + contents;
}

/// Of a size that was not known when it was written.
QByteArray open(const char* id, const QByteArray& contents) {
    return hex(id) + hex("01ffffffffffffff") + contents;
}

const QByteArray kHeader = element("1a45dfa3", element("4282", "matroska"));
const QByteArray kInfo =
    element("1549a966", element("2ad7b1", number(1000000, 4)) + element("4489", number(0x447a0000, 4)));
const QByteArray kPicture = "a picture of more than sixteen bytes";

QByteArray track(int itsNumber, int type, const char* codec, const QByteArray& more = {}) {
    return element("ae", element("d7", number(static_cast<quint64>(itsNumber), 1)) +
                             element("83", number(static_cast<quint64>(type), 1)) + element("86", codec) +
                             more);
}

const QByteArray kVideo = track(1, 1, "V_VP9", element("23e383", number(40000000, 4)));
const QByteArray kBoth = element("1654ae6b", kVideo + track(2, 0x11, "S_TEXT/UTF8"));

QByteArray block(int ticks, const QByteArray& contents = kPicture, int itsTrack = 1, int flags = 0x80) {
    return element("a3", number(0x80U | static_cast<quint64>(itsTrack), 1) +
                             number(static_cast<quint64>(ticks), 2) + static_cast<char>(flags) + contents);
}

QByteArray subtitle(int ticks, int duration, const QByteArray& text) {
    return element("a0",
                   element("a1", hex("82") + number(static_cast<quint64>(ticks), 2) + hex("00") + text) +
                       element("9b", number(static_cast<quint64>(duration), 2)));
}

QByteArray timestamp(quint64 ticks) {
    return element("e7", number(ticks, 4));
}

/// Ten pictures, 40 ms each.
QByteArray pictures(int first = 0) {
    QByteArray blocks;
    for (int i = 0; i < 10; ++i)
        blocks += block(first + 40 * i);
    return blocks;
}

QByteArray cluster(quint64 ticks, const QByteArray& blocks = pictures()) {
    return element("1f43b675", timestamp(ticks) + blocks);
}

QByteArray segment(const QByteArray& clusters, const QByteArray& tracks = kBoth) {
    return kHeader + element("18538067", kInfo + tracks + clusters);
}

QByteArray replaced(QByteArray bytes, qsizetype position, const QByteArray& with) {
    return bytes.replace(position, with.size(), with);
}

const QByteArray kVoid = element("ec", QByteArray(30, 0));
const QByteArray kCrc = element("bf", "abcd");
const QByteArray kThree = cluster(0) + cluster(400) + cluster(800);

/// A movie whose one block is laced: 1: Xiph, 2: fixed, 3: EBML.
QByteArray laced(int lacing, const char* sizes, int bytes) {
    return segment(cluster(0, block(0, hex(sizes) + QByteArray(bytes, 'x'), 1, 0x80 | lacing << 1)));
}

/// H.264 of which a header of `stripped` was removed.
QByteArray withUnits(const QByteArray& frame, const char* stripped = "") {
    QByteArray more = element("63a2", hex("0164001effe1"));
    if (*stripped != 0)
        more += element("6d80", element("6240", element("5034", element("4254", hex("03")) +
                                                                    element("4255", hex(stripped)))));
    return segment(cluster(0, block(0, frame)), element("1654ae6b", track(1, 1, "V_MPEG4/ISO/AVC", more)));
}

}  // namespace

class MatroskaReaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reading_data() {
        const QByteArray zeros(3000, 0);
        const QByteArray junk(3000, 'x');
        const QByteArray whole = segment(kThree);
        const char* const sound = "30 0.00-1.20; 0";
        addRows<QByteArray, QByteArray>({
            // Odd, but sound.
            {"plain", whole, sound},
            {"open segment", kHeader + open("18538067", kInfo + kBoth + kThree), sound},
            {"open clusters",
             kHeader + open("18538067", kInfo + kBoth + open("1f43b675", timestamp(0) + pictures()) +
                                            open("1f43b675", timestamp(400) + pictures()) +
                                            element("1c53bb6b", "")),
             "20 0.00-0.80; 0"},
            {"padding and checksums",
             segment(kVoid + kCrc + cluster(0, kCrc + kVoid + pictures()) + kVoid + cluster(400) + kVoid),
             "20 0.00-0.80; 0"},
            {"elements of other versions",
             segment(element("4fff", "abc") + cluster(0, pictures() + element("4ffe", "ab")) +
                     element("4ffd", "")),
             "10 0.00-0.40; 0"},
            {"equal cluster times", segment(cluster(0) + cluster(0, pictures(400))), "20 0.00-0.80; 0"},
            {"clusters a little out of order",
             segment(cluster(500, pictures(-500)) + cluster(300, pictures(100))), "20 0.00-0.80; 0"},
            {"bytes behind the segment", whole + zeros, sound},
            {"more clusters behind the segment", segment(cluster(0)) + cluster(400), "20 0.00-0.80; 0"},
            {"negative times", segment(cluster(0, pictures(-100))), "10 -0.10-0.30; 0"},
            {"subtitles far behind the end",
             segment(cluster(0, pictures() + subtitle(0, 500, "Hi") + subtitle(9000, 500, "<i> </i>")) +
                     cluster(3000000, subtitle(0, 900, "{\\an8}\\N&nbsp;"))),
             "10 0.00-0.40; 3 0.00-3000.90 line 0.00-0.50 blank 9.00-9.50 blank 3000.00-3000.90"},
            {"delay of the codec",
             segment(cluster(0),
                     element("1654ae6b", track(1, 1, "V_VP9", element("56aa", number(100000000, 4))))),
             "10 -0.10-0.30"},
            {"Xiph laces", laced(1, "02 ff01 03", 256 + 3 + 5), "3 0.00-0.12; 0"},
            {"EBML laces", laced(3, "02 4100 5fff", 256 + 256 + 5), "3 0.00-0.12; 0"},
            {"laces of one size", laced(2, "03", 12), "4 0.00-0.16; 0"},
            {"an empty frame", segment(cluster(0, block(0) + block(40, ""))), "1 0.00-0.04; 0"},
            {"no key frame first",
             segment(cluster(0, block(0, kPicture, 1, 0) + block(40, kPicture, 1, 0) + block(80))),
             "3 lead 2 0.00-0.12; 0"},
            {"units", withUnits(hex("00000002 0910 00000003 658884")), "1 0.00-0.00"},
            {"units with a stripped header", withUnits(hex("02 0910 00000003 658884"), "000000"),
             "1 0.00-0.00"},
            {"another header than stripped", withUnits(hex("02 0910 00000003 658884"), "000001"),
             "1 0.00-0.00; !bad NAL unit length 0.00-1.00"},

            // Damaged.
            {"a cluster is missing", segment(cluster(0) + cluster(2000)), "20 0.00-2.40 hole 0.36-2.00; 0"},
            {"a cluster of noise", segment(cluster(0) + junk + cluster(3000)),
             "20 0.00-3.40 hole 0.36-3.00; 0; !junk between elements 0.36-3.00"},
            {"a cluster of zeros", segment(cluster(0) + zeros + cluster(3000)),
             "20 0.00-3.40 hole 0.36-3.00; 0; !zeros between elements 0.36-3.00"},
            {"noise between blocks", segment(cluster(0, pictures() + junk + pictures(2000))),
             "20 0.00-2.40 hole 0.36-2.00; 0; !junk between elements 0.36-2.00"},
            {"a size is too large",
             replaced(whole, whole.indexOf(hex("a310"), kHeader.size()) + 1, hex("11")),
             "29 0.04-1.20; 0; !junk between elements 0.00-0.04"},
            {"a cluster is shorter than it says",
             segment(replaced(cluster(0), 4, hex("10ffff00")) + cluster(400)),
             "20 0.00-0.80; 0; !element longer than its parent 0.36-0.40"},
            {"cut off in a block", whole.chopped(10), "29 0.00-1.16; 0; !truncated file 1.12-1.12"},
            {"cut off between clusters", whole.chopped(cluster(0).size()),
             "20 0.00-0.80; 0; !truncated file 0.76-1.00"},
            {"an open movie cut off", (kHeader + open("18538067", kBoth + kThree)).chopped(10),
             "29 0.00-1.16; 0; !truncated file 1.12-1.12"},
            {"times go back", segment(cluster(60000) + cluster(400)),
             "20 0.40-60.40 hole 0.76-60.00; 0; !timestamps out of order 60.36-60.36"},
            {"a time far behind the end", segment(cluster(0) + cluster(80000000)),
             "20 0.00-80000.40 hole 0.36-80000.00; 0; !timestamps out of order 0.36-80000.00"},
            {"a picture of zeros", segment(cluster(0, block(0) + block(40, QByteArray(500, 0)))),
             "2 0.00-0.08; 0; !sample of zeros 0.04-1.00"},
            {"an unknown track", segment(cluster(0, block(0, kPicture, 7))),
             "0; 0; !unknown track 0.00-1.00"},
            {"laces longer than the block", laced(1, "02 ff01 03", 200), "0; 0; !bad lacing 0.00-1.00"},
            {"laces that do not divide the block", laced(2, "03", 13), "0; 0; !bad lacing 0.00-1.00"},
            {"a unit longer than the frame", withUnits(hex("00000002 0910 00000004 658884")),
             "1 0.00-0.00; !bad NAL unit length 0.00-1.00"},
            {"a unit with the forbidden bit", withUnits(hex("00000002 8910 00000003 658884")),
             "1 0.00-0.00; !bad NAL unit length 0.00-1.00"},
            {"no tracks", kHeader + element("18538067", kInfo), "problem"},
        });
    }
    void reading() {
        const auto [bytes, expected] = row<QByteArray, QByteArray>();
        const BytesInFile file(bytes);
        const media::Reading reading = media::read(file.path());
        QCOMPARE(summary(reading), QString(expected));
        QCOMPARE(reading.isComplete(), !expected.contains("problem"));
    }

    void descriptions() {
        const QByteArray tracks = element(
            "1654ae6b",
            track(1, 1, "V_VP9",
                  element("e0", element("b0", number(1920, 2)) + element("ba", number(1080, 2)))) +
                track(9, 0x20, "V_CONTROL") +
                track(300 & 0x7F, 2, "A_AC3",
                      element("22b59c", "ger") + element("536e", "Name") + element("88", hex("00")) +
                          element("e1", element("9f", hex("06")) + element("b5", number(0x473b8000, 4)))));
        const QByteArray atom = element("73c4", hex("01"));
        const QByteArray chapters =
            element("1043a770", element("45b9", element("b6", atom + element("91", hex("00"))) +
                                                    element("b6", atom + element("91", hex("05"))) +
                                                    element("b6", atom + element("91", hex("03"))) +
                                                    element("b6", element("91", hex("09")))));
        const BytesInFile file(segment(cluster(0) + chapters + element("1c53bb6b", ""), tracks));
        const media::Reading reading = media::read(file.path());
        QCOMPARE(reading.tracks.size(), std::size_t{3});
        QCOMPARE(reading.tracks[0].width, 1920);
        QCOMPARE(reading.tracks[0].language, std::string("eng"));
        QCOMPARE(reading.tracks[1].index, -1);  // The tool makes no stream of it.
        const media::Track& audio = reading.tracks[2];
        QCOMPARE(std::tuple(audio.index, audio.number, audio.channels, audio.sampleRate, audio.isDefault),
                 std::tuple(1, quint64{44}, 6, 48000.0, false));
        QCOMPARE(audio.language + audio.name, std::string("gerName"));
        QCOMPARE(std::tuple(reading.chapters, reading.hasIndex), std::tuple(2, true));
    }

    /// The scan follows a writer, front to back, and ends when it is told to.
    void gateAndCancel() {
        QByteArray clusters;
        for (quint64 i = 0; i < 40; ++i)
            clusters += cluster(400 * i, pictures() + block(390, QByteArray(500'000, 'x'), 2));
        const BytesInFile file(segment(clusters));
        std::vector<quint64> asked;
        media::Options options;
        options.mayReadUpTo = [&](quint64 position) {
            asked.push_back(position);
            return position < 10'000'000;
        };
        const media::Reading reading = media::readMatroska(file.path(), options);
        QVERIFY(reading.cancelled && !reading.isComplete());
        QVERIFY(std::is_sorted(asked.begin(), asked.end()) && asked.size() == 3);
        QVERIFY2(reading.tracks[0].frames > 100 && reading.tracks[0].frames < 300,
                 qPrintable(summary(reading)));

        std::stop_source stop;
        options.mayReadUpTo = [&](quint64 position) { return position < 5'000'000 || stop.request_stop(); };
        QVERIFY(media::readMatroska(file.path(), options, stop.get_token()).cancelled);
    }
};

QTEST_APPLESS_MAIN(MatroskaReaderTest)
#include "tst_MatroskaReader.moc"
