#include "fakes/Table.h"
#include "media/Mp4AudioTracks.h"
#include "media/Summary.h"

#include <QFile>

namespace {

QByteArray number(quint64 value, int bytes = 4) {
    QByteArray result;
    for (int i = bytes - 1; i >= 0; --i)
        result += static_cast<char>(value >> (8 * i));
    return result;
}

QByteArray words(std::initializer_list<qint64> values) {
    QByteArray result;
    for (const qint64 value : values)
        result += number(static_cast<quint64>(value));
    return result;
}

QByteArray box(const char* type, const QByteArray& contents) {
    return number(static_cast<quint64>(contents.size() + 8)) + type + contents;
}

/// A box of version 0 whose contents begin with the number of entries, which have `columns` words.
QByteArray entries(const char* type, std::initializer_list<qint64> values, int columns) {
    return box(type, words({0, static_cast<qint64>(values.size()) / columns}) + words(values));
}

const QByteArray kType = box("ftyp", "isom");
constexpr int kData = 8 + 4 + 8;  // Where the samples begin.
const QByteArray kPicture = QByteArray::fromHex("00000003 658884 00000002 4101 0000000a") + "A0123456789";
const QByteArray kPictures = kPicture.left(13).repeated(4);  // Each of two units.

/// A track of one sample entry in a file with 1,000 units a second.
struct Tables {
    const char* handler = "vide";
    QByteArray entry = box("avc1", QByteArray(78, 0) + box("avcC", QByteArray::fromHex("0164001effe1")));
    QByteArray times = entries("stts", {4, 40}, 2);
    QByteArray sizes = box("stsz", words({0, 0, 4, 13, 13, 13, 13}));
    QByteArray chunkRuns = entries("stsc", {1, 4, 1}, 3);
    QByteArray chunks = entries("stco", {kData}, 1);
    QByteArray more;    // Further tables.
    QByteArray beside;  // Beside the media.
    int number = 1;

    QByteArray track() const {
        const QByteArray header = box("tkhd", words({1, 0, 0, number, 0, 0}) + QByteArray(60, 0));
        const QByteArray description = box("stsd", words({0, 1}) + entry);
        const QByteArray all = description + times + sizes + chunkRuns + chunks + more;
        const QByteArray media = box("mdhd", words({0, 0, 0, 1000, 160}) + ::number(0x15C70000)) +
                                 box("hdlr", words({0, 0}) + handler + QByteArray(13, 0)) +
                                 box("minf", box("stbl", all));
        return box("trak", header + beside + box("mdia", media));
    }
};

QByteArray index(const QByteArray& tracks) {
    return box("moov", box("mvhd", words({0, 0, 0, 1000, 160}) + QByteArray(80, 0)) + tracks);
}

QByteArray movie(const Tables& tables, const QByteArray& data = kPictures) {
    return kType + box("mdat", data) + index(tables.track());
}

/// The index in front; the samples come after a box header behind it.
QByteArray indexInFront() {
    Tables tables;
    const qsizetype size = (kType + index(tables.track())).size();
    tables.chunks = entries("stco", {size + 8}, 1);
    return kType + index(tables.track());
}

template <typename Change>
QByteArray changed(const Change& change, const QByteArray& data = kPictures) {
    Tables tables;
    change(tables);
    return movie(tables, data);
}

void asText(Tables& tables) {
    tables.handler = "sbtl";
    tables.entry = box("tx3g", QByteArray(46, 0));
}

void asSound(Tables& tables, const char* codec) {
    tables.handler = "soun";
    tables.entry = box(codec, QByteArray(28, 0));
}

QByteArray edits(std::initializer_list<qint64> values) {
    return box("edts", entries("elst", values, 3));
}

QByteArray fragment(const QByteArray& trackHeader, const QByteArray& run) {
    return box("moof", box("mfhd", words({0, 1})) + box("traf", trackHeader + run));
}

const QByteArray kExtension = box("mvex", box("trex", words({0, 1, 1, 40, 13, 0})));

}  // namespace

class Mp4ReaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reading_data() {
        const QByteArray whole = movie({});
        const QByteArray text = QByteArray::fromHex("0000 0002") + "Hi" + QByteArray::fromHex("0003") + "<i>";
        const auto texts = [](Tables& tables) {
            asText(tables);
            tables.times = entries("stts", {3, 500}, 2);
            tables.sizes = box("stsz", words({0, 0, 3, 2, 4, 5}));
        };
        Tables wide;
        wide.chunks = entries("stco", {kData + 16}, 1);
        Tables none;
        none.times = entries("stts", {}, 2);
        none.sizes = box("stsz", words({0, 0, 0}));
        none.chunks = entries("stco", {}, 1);
        const QByteArray start = kType + index(none.track() + kExtension);
        const qint64 behind = start.size();
        const auto lasting = [](std::initializer_list<qint64> times) {
            qint64 samples = 0;
            for (auto count = times.begin(); count < times.end(); count += 2)
                samples += *count;
            return changed(
                [&](Tables& t) {
                    t.times = entries("stts", times, 2);
                    t.sizes = box("stsz", words({0, 13, samples}));
                    t.chunkRuns = entries("stsc", {1, samples, 1}, 3);
                },
                kPictures.left(13).repeated(samples));
        };
        addRows<QByteArray, QByteArray>({
            {"pictures missing in a constant frame rate", lasting({20, 40, 1, 120, 20, 40, 1, 80, 20, 40}),
             "62 0.00-2.60 skipped 3"},
            {"half of a picture's duration more", lasting({20, 40, 1, 60, 20, 40}), "41 0.00-1.66"},
            {"two pictures at one time, made up for", lasting({60, 40, 1, 0, 20, 40, 1, 80, 20, 40}),
             "102 0.00-4.08"},
            {"another frame rate", lasting({20, 20, 20, 40}), "40 0.00-1.20"},
            {"telecine", lasting({20, 40, 1, 80, 1, 40, 1, 80, 1, 40, 1, 80, 20, 40}), "45 0.00-1.92"},
            {"still pictures", lasting({20, 200, 1, 400, 20, 200}), "41 0.00-8.40"},
            // Odd, but sound.
            {"plain", whole, "4 0.00-0.16"},
            {"data of 64-bit size",
             kType + number(1) + "mdat" + number(16 + 60, 8) + QByteArray(8, 0) + kPictures +
                 index(wide.track()),
             "4 0.00-0.16"},
            {"data to the end of the file", indexInFront() + number(0) + "mdat" + kPictures, "4 0.00-0.16"},
            {"other boxes, padding at the end",
             kType + box("mdat", kPictures) + box("free", "abc") + box("abcd", "x") +
                 index(Tables().track()) + words({0}),
             "4 0.00-0.16"},
            {"bytes behind the index", whole + QByteArray(100, 0), "4 0.00-0.16"},
            {"several chunks, wide offsets", changed([](Tables& t) {
                 t.chunkRuns = entries("stsc", {1, 1, 1, 2, 2, 1, 3, 1, 1}, 3);
                 t.chunks = box("co64", words({0, 3, 0, kData, 0, kData + 13, 0, kData + 39}));
             }),
             "4 0.00-0.16"},
            {"order of decoding and edits", changed([](Tables& t) {
                 t.more = entries("ctts", {1, 80, 1, 200, 2, 40}, 2);
                 t.beside = edits({500, -1, 65536, 200, 80, 65536});
             }),
             "4 0.50-0.70"},
            {"an edit leaves the beginning out", changed([](Tables& t) {
                 t.beside = edits({80, 80, 65536});
             }),
             "4 0.00-0.08"},
            {"negative composition offsets", changed([](Tables& t) {
                 t.more = entries("ctts", {1, 0, 3, -20}, 2);
             }),
             "4 0.00-0.14"},
            {"key frames", changed([](Tables& t) { t.more = entries("stss", {3}, 1); }),
             "4 lead 2 0.00-0.16"},
            {"sizes of four bits", changed([](Tables& t) {
                 t.sizes = box("stz2", words({0, 4, 4}) + QByteArray::fromHex("dddd"));
             }),
             "4 0.00-0.16"},
            {"raw sound",
             changed(
                 [](Tables& t) {
                     asSound(t, "sowt");
                     t.times = entries("stts", {26, 1}, 2);
                     t.sizes = box("stsz", words({0, 2, 26}));
                     t.chunkRuns = entries("stsc", {1, 26, 1}, 3);
                 },
                 QByteArray(52, 0)),
             "26 0.00-0.03"},
            {"text", changed(texts, text), "3 0.00-1.50 line 0.50-1.00 blank 1.00-1.50"},
            {"text behind an edit",
             changed(
                 [&](Tables& t) {
                     texts(t);
                     t.beside = edits({200, -1, 65536, 1500, 0, 65536});
                 },
                 text),
             "3 0.20-1.70 line 0.70-1.20 blank 1.20-1.70"},
            {"fragments",
             start + box("mdat", kPictures) +
                 fragment(box("tfhd", words({1, 1, 0, behind + 8})), box("trun", words({0x1, 2, 0}))) +
                 fragment(box("tfhd", words({0x9, 1, 0, behind + 8, 80})) + box("tfdt", words({0, 80})),
                          box("trun", words({0x201, 2, 26, 13, 13}))),
             "4 0.00-0.24"},

            // Damaged.
            {"cut off in the data", (indexInFront() + box("mdat", kPictures)).chopped(5),
             "4 0.00-0.16; !sample outside of the file 0.12-0.16; !truncated file 0.16-0.16"},
            {"cut off in the index", whole.chopped(10), "!truncated file 0.00-0.00; problem"},
            {"a sample behind the end", changed([](Tables& t) { t.chunks = entries("stco", {100000}, 1); }),
             "4 0.00-0.16; !sample outside of the file 0.00-0.16"},
            {"a sample far behind the end", changed([](Tables& t) {
                 t.chunks = box("co64", words({0, 1, -1, -4}));
             }),
             "4 0.00-0.16; !sample outside of the file 0.00-0.16"},
            {"units do not fill a sample", changed([](Tables& t) {
                 t.sizes = box("stsz", words({0, 0, 4, 13, 12, 13, 13}));
             }),
             "4 0.00-0.16; !bad NAL unit length 0.04-0.16"},
            {"a picture of zeros",
             changed([](Tables&) {}, kPictures.first(13) + QByteArray(26, 0) + kPictures.first(13)),
             "4 0.00-0.16; !bad NAL unit length 0.04-0.12"},
            {"sound of zeros",
             changed(
                 [](Tables& t) {
                     asSound(t, "mp4a");
                     t.times = entries("stts", {2, 40}, 2);
                     t.sizes = box("stsz", words({0, 0, 2, 26, 26}));
                 },
                 QByteArray(52, 0).replace(0, 1, "x")),
             "2 0.00-0.08; !sample of zeros 0.04-0.08"},
            {"an empty picture", changed([](Tables& t) {
                 t.sizes = box("stsz", words({0, 0, 4, 13, 0, 13, 13}));
             }),
             "4 0.00-0.16; !empty sample 0.04-0.08"},
            {"more sizes than times", changed([](Tables& t) {
                 t.times = entries("stts", {2, 40}, 2);
             }),
             "4 0.00-0.16; !bad sample table 0.00-0.16"},
            {"fewer chunks than samples", changed([](Tables& t) {
                 t.chunkRuns = entries("stsc", {1, 3, 1}, 3);
             }),
             "3 0.00-0.12; !bad sample table 0.00-0.16"},
            {"more entries than room", changed([](Tables& t) {
                 t.sizes = box("stsz", words({0, 0, 1000000, 13, 13, 13, 13}));
             }),
             "4 0.00-0.16; !bad sample table 0.00-0.00"},
            {"endless samples of one size", changed([](Tables& t) {
                 t.sizes = box("stsz", words({0, 1, -1}));
                 t.chunkRuns = entries("stsc", {1, -1, 1}, 3);
             }),
             "586 0.00-23.40; !bad NAL unit length 0.00-22.60; !sample outside of the file 22.60-23.40; "
             "!bad sample table 23.40-23.40"},
            {"endless samples in a fragment",
             start + fragment(box("tfhd", words({0x10, 1, 0})), box("trun", words({0, -1}))),
             "0; !bad sample table 0.00-0.00"},
            {"a fragment of an unknown track",
             start + fragment(box("tfhd", words({0, 9})), box("trun", words({0, 1}))),
             "0; !unknown track 0.00-0.00"},
            {"no index", kType + box("mdat", kPictures), "problem"},
            {"a compressed index", kType + box("moov", box("cmov", "zlib")), "problem"},
        });
    }
    void reading() {
        const auto [bytes, expected] = row<QByteArray, QByteArray>();
        const BytesInFile file(bytes);
        QCOMPARE(summary(media::read(file.path())), QString(expected));
    }

    /// Each looks at other parts of the file; the damage comes out as one thread finds it.
    void twoThreads() {
        constexpr int kMany = 40;
        constexpr int kApart = 1 << 20;
        QByteArray sizes = words({0, 0, kMany});
        QByteArray chunks = words({0, kMany});
        QByteArray data;
        for (int i = 0; i < kMany; ++i) {
            sizes += number(13);
            chunks += number(static_cast<quint64>(kData + i * kApart));
            const bool isDamaged = i == 3 || i == 4 || i == 18 || i == 35;
            data += isDamaged ? QByteArray(13, 'x') : kPictures.left(13);
            data.resize((i + 1) * kApart, '\0');
        }
        const BytesInFile file(changed(
            [&](Tables& t) {
                t.times = entries("stts", {kMany, 2000}, 2);
                t.sizes = box("stsz", sizes);
                t.chunkRuns = entries("stsc", {1, 1, 1}, 3);
                t.chunks = box("stco", chunks);
            },
            data));
        media::Options options;
        const QString alone = summary(media::read(file.path(), options));
        options.usesTwoThreads = true;
        QCOMPARE(summary(media::read(file.path(), options)), alone);
        QCOMPARE(alone.count(media::name(media::Fault::BadNalLength)), 3);
    }

    void onlyTheFirstAudioTrackIsEnabled() {
        Tables one;
        asSound(one, "mp4a");
        Tables two = one;
        two.number = 2;
        const BytesInFile file(kType + box("mdat", kPictures) +
                               index(Tables().track() + one.track() + two.track()));
        const media::Reading before = media::read(file.path());
        QCOMPARE(media::enableFirstAudioTrackOnly(file.path(), before), media::PatchResult::Changed);
        const media::Reading after = media::read(file.path());
        QCOMPARE(summary(after), summary(before));
        QVERIFY(after.tracks[0].isEnabled && after.tracks[1].isEnabled && !after.tracks[2].isEnabled);
        QVERIFY(after.tracks[0].alternateGroup == 0 && after.tracks[1].alternateGroup != 0);
        QCOMPARE(after.tracks[1].alternateGroup, after.tracks[2].alternateGroup);
        QCOMPARE(media::enableFirstAudioTrackOnly(file.path(), after), media::PatchResult::Unchanged);
        QCOMPARE(media::enableFirstAudioTrackOnly(file.path(), before), media::PatchResult::NotAsRead);
        QCOMPARE(media::enableFirstAudioTrackOnly("/nowhere", before), media::PatchResult::Failed);
    }
};

QTEST_APPLESS_MAIN(Mp4ReaderTest)
#include "tst_Mp4Reader.moc"
