#include "fakes/Table.h"
#include "media/AviPictures.h"
#include "media/SubtitleFile.h"
#include "media/Summary.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>

#include <cstdlib>
#include <fcntl.h>
#include <malloc.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace {

std::size_t allocated = 0;
std::size_t mostAllocated = 0;

}  // namespace

// Counts what readings allocate.
void* operator new(std::size_t size) {
    void* memory = std::malloc(size);
    if (!memory) throw std::bad_alloc();
    allocated += malloc_usable_size(memory);
    mostAllocated = std::max(mostAllocated, allocated);
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return operator new(size);
}
void operator delete(void* memory) noexcept {
    allocated -= malloc_usable_size(memory);
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace {

constexpr std::size_t kMostMemory = 2U << 20U;

QByteArray run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments, QProcess::ReadOnly);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        qFatal("%s: %s", qPrintable(program), process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

QString fault(const media::Reading& reading) {
    if (reading.damageTotal > 0) return media::name(reading.damage.front().fault);
    return reading.problem == media::Problem::None ? "" : "problem";
}

quint64 frames(const media::Reading& reading) {
    quint64 sum = 0;
    for (const media::Track& track : reading.tracks)
        sum += track.frames;
    return sum;
}

/// Bytes in memory that have a path.
class Scratch {
public:
    Scratch() : m_file(::memfd_create("movie", MFD_CLOEXEC)) {}
    ~Scratch() { ::close(m_file); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    QString holding(const QByteArray& bytes) const {
        if (::ftruncate(m_file, 0) != 0 ||
            ::pwrite(m_file, bytes.data(), static_cast<size_t>(bytes.size()), 0) != bytes.size())
            qFatal("cannot write to memory");
        return QString("/proc/self/fd/%1").arg(m_file);
    }

private:
    int m_file;
};

/// The names of movies that initTestCase() makes, and how.
constexpr std::pair<const char*, const char*> kMovies[] = {
    {"h264.mkv",
     "-f lavfi -i testsrc=size=64x48:rate=25:duration=2 -f lavfi -i sine=duration=2 -map 0 -map 1 -pix_fmt yuv420p "
     "-c:v libx264 -preset ultrafast -bf 2 -g 12 -c:a ac3 -b:a 32k"},
    {"hevc.mkv",
     "-f lavfi -i testsrc=size=64x48:rate=24:duration=1 -f lavfi -i sine=duration=1 -c:v libx265 -preset ultrafast "
     "-x265-params log-level=none -c:a libopus"},
    {"vp9.webm",
     "-f lavfi -i testsrc=size=64x48:rate=24:duration=1 -c:v libvpx-vp9 -deadline realtime -cpu-used 8"},
    {"silence.mkv",
     "-f lavfi -i color=black:size=64x48:rate=25:duration=1 -f lavfi -i anullsrc -t 1 -c:v mpeg4 -c:a libvorbis"},
    {"live.mkv", "-i h264.mkv -c copy -live 1 -cluster_time_limit 300"},
    {"late.mkv", "-ss 1.1 -i h264.mkv -c copy"},
    {"h264.mp4", "-i h264.mkv -c copy"},
    {"faststart.mp4", "-i h264.mkv -c copy -movflags faststart"},
    {"fragmented.mp4", "-i h264.mkv -c copy -movflags frag_keyframe+empty_moov+delay_moov"},
    {"dash.mp4", "-i h264.mkv -c copy -movflags dash+frag_every_frame+delay_moov"},
    {"hevc.mp4", "-i hevc.mkv -c copy -tag:v hvc1"},
    {"drops.avi",
     "-f lavfi -i testsrc=size=64x48:rate=25:duration=2 -vf select=lt(t\\,1)+gt(t\\,1.5) -vsync passthrough -c:v mpeg4"},
    {"pcm.mov", "-i h264.mkv -c:v copy -c:a pcm_s16le -ar 8000"},
};

}  // namespace

class RealMoviesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(QDir::setCurrent(m_folder.path()));
        for (const auto& [name, how] : kMovies)
            run("ffmpeg", QString("-v error -bitexact %1 %2").arg(how, name).split(' '));
    }

    /// As many frames and bytes as the tool finds, the same times, and nothing wrong.
    void asTheToolReadsThem_data() {
        QTest::addColumn<QString>("name");
        for (const auto& [name, how] : kMovies)
            if (!QByteArrayView(name).endsWith(".avi")) QTest::newRow(name) << QString(name);
    }
    void asTheToolReadsThem() {
        QFETCH(QString, name);
        const media::Reading reading = media::read(name);
        QCOMPARE(fault(reading), QString());
        const QJsonArray packets =
            QJsonDocument::fromJson(run("ffprobe", {"-v", "error", "-of", "json", "-show_packets", name}))
                .object()["packets"]
                .toArray();
        for (const media::Track& track : reading.tracks) {
            quint64 count = 0;
            quint64 bytes = 0;
            double start = 1e9;
            double end = 0;
            for (const QJsonValue packet : packets) {
                if (packet["stream_index"].toInt() != track.index) continue;
                ++count;
                bytes += packet["size"].toString().toULongLong();
                start = std::min(start, packet["pts_time"].toString().toDouble());
                end = std::max(end, packet["pts_time"].toString().toDouble() +
                                        packet["duration_time"].toString().toDouble());
            }
            if (track.codec != "sowt") QCOMPARE(track.frames, count);
            QCOMPARE(track.bytes, bytes);
            QVERIFY2(std::abs(*track.start - start) < 0.05 && std::abs(*track.end - end) < 0.05,
                     qPrintable(summary(reading)));
            QVERIFY(track.holes.empty());
        }
    }

    void picturesOfAnAvi() {
        const auto streams = media::aviPictures("drops.avi");
        QVERIFY(streams && streams->size() == 1);
        QCOMPARE(streams->front().indexed + streams->front().dropped, streams->front().declared);
        QCOMPARE(streams->front().indexed, quint64{37});
        QVERIFY(media::aviPictures("h264.mkv")->empty());
    }
    /// Large files have an index of indexes, and the other one of the first part only.
    void picturesOfALargeAvi() {
        const auto word = [](quint32 value) {
            return QByteArray(reinterpret_cast<const char*>(&(value = qToLittleEndian(value))), 4);
        };
        const auto chunk = [&](const char* type, const QByteArray& contents) {
            return type + word(static_cast<quint32>(contents.size())) + contents;
        };
        const auto index = [&](const char* type, int kind, quint32 entries, const QByteArray& contents) {
            return chunk(type, QByteArray::fromHex("0400 00") + static_cast<char>(kind) + word(entries) +
                                   "00dc" + QByteArray(12, 0) + contents);
        };
        const auto avi = [&](quint32 place) {
            const QByteArray indexes = index(
                "indx", 0, 2,
                word(place) + word(0) + word(40) + word(3) + word(place + 56) + word(0) + word(40) + word(1));
            const QByteArray stream =
                chunk("strh", "vids" + QByteArray(28, 0) + word(5) + QByteArray(20, 0)) + indexes;
            return "RIFF" + word(100000) + "AVI " + chunk("LIST", "hdrl" + chunk("LIST", "strl" + stream)) +
                   chunk("idx1", "00dc" + word(0) + word(0) + word(9));
        };
        const QByteArray front = avi(0);
        const QByteArray two = word(0) + word(9) + word(0) + word(0x80000009);
        const QByteArray bytes = avi(static_cast<quint32>(front.size())) +
                                 index("ix00", 1, 3, two + word(0) + word(0)) + index("ix00", 1, 1, two);
        const auto streams = media::aviPictures(BytesInFile(bytes).path());
        QVERIFY(streams && streams->size() == 1);
        QCOMPARE(std::tuple(streams->front().declared, streams->front().indexed, streams->front().dropped),
                 std::tuple(quint64{5}, quint64{3}, quint64{1}));
    }

    void damageIsSeen_data() {
        addRows<QString, QByteArray, int>({{"cut off", "h264.mkv", "cut", 0},
                                           {"zeros", "h264.mkv", "zeros", 3000},
                                           {"noise", "h264.mkv", "noise", 3000},
                                           {"bytes missing", "h264.mkv", "remove", 40},
                                           {"many bytes missing", "h264.mkv", "remove", 5000},
                                           {"bytes inserted", "h264.mkv", "insert", 40},
                                           {"live: cut off", "live.mkv", "cut", 0},
                                           {"live: zeros", "live.mkv", "zeros", 3000},
                                           {"live: noise", "live.mkv", "noise", 3000},
                                           {"live: bytes missing", "live.mkv", "remove", 40},
                                           {"MP4: cut off", "faststart.mp4", "cut", 0},
                                           {"MP4: zeros", "faststart.mp4", "zeros", 3000},
                                           {"MP4: noise", "faststart.mp4", "noise", 3000},
                                           {"MP4: bytes missing", "faststart.mp4", "remove", 40},
                                           {"MP4, index behind: cut off", "h264.mp4", "cut", 0},
                                           {"MP4, index behind: bytes missing", "h264.mp4", "remove", 40}});
    }
    void damageIsSeen() {
        const auto [name, how, length] = row<QString, QByteArray, int>();
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray whole = file.readAll();
        const quint64 all = frames(media::read(name));
        const Scratch scratch;
        QRandomGenerator random(20240229);
        constexpr int kPlaces = 60;
        for (int i = 0; i < kPlaces; ++i) {
            const qsizetype place = whole.size() / kPlaces * i + 50;
            QByteArray noise(length, 0);
            if (how == "noise")
                std::generate(noise.begin(), noise.end(),
                              [&] { return static_cast<char>(random.generate()); });
            QByteArray bytes = whole;
            if (how == "cut") bytes.truncate(place);
            if (how == "zeros" || how == "noise") bytes.replace(place, length, noise).truncate(whole.size());
            if (how == "remove") bytes.remove(place, length);
            if (how == "insert") bytes.insert(place, QByteArray(length, 'x'));
            const media::Reading reading = media::read(scratch.holding(bytes));
            QVERIFY2(!fault(reading).isEmpty() || frames(reading) < all,
                     qPrintable(QString("at %1").arg(place)));
        }
    }

    /// For a longer look, best with the address sanitizer: RAVELIN_FUZZ_ROUNDS. Above some 100,000
    /// QTEST_FUNCTION_TIMEOUT, too.
    void anyBytes() {
        std::vector<QByteArray> movies;
        for (const char* name :
             {"h264.mkv", "live.mkv", "faststart.mp4", "dash.mp4", "pcm.mov", "drops.avi"}) {
            QFile file(name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            movies.push_back(file.readAll());
        }
        movies.emplace_back(
            "1\n00:00:01,000 --> 00:00:02,000\n<i>One\n\n2\n00:00:03,000 --> 00:00:04,000\nTwo\n");
        movies.emplace_back(
            "[Script Info]\nDialogue: 0,0:00:05.00,0:00:06.90,Default,,0,0,0,,Five, with comma\n");
        movies.emplace_back("{1}{1}25\n{25}{50}One|Two\n{75}{100}Three\n");
        movies.emplace_back("<SAMI><SYNC Start=1000><P Class=ENCC>\nOne<SYNC Start=2000>Two");
        const int rounds = qEnvironmentVariable("RAVELIN_FUZZ_ROUNDS", "2000").toInt();
        const Scratch scratch;
        QRandomGenerator random(20240229);
        for (int round = 0; round < rounds; ++round) {
            const QByteArray bytes =
                mutated(movies[random.bounded(static_cast<quint32>(movies.size()))], random);
            const QString path = scratch.holding(bytes);
            const std::size_t before = mostAllocated = allocated;
            for (const auto reader : {media::read, media::readMatroska, media::readMp4})
                static_cast<void>(reader(path, {}, {}));
            static_cast<void>(media::readSubtitleFile(path));
            static_cast<void>(media::aviPictures(path));
            QVERIFY2(mostAllocated - before < kMostMemory, qPrintable(QString("round %1").arg(round)));
        }
    }

    /// As many tracks, names, lines and damage as bring a reading to its limits.
    void memoryIsBounded() {
        const auto element = [](const char* id, const QByteArray& contents) {
            const quint32 size = qToBigEndian(0x10000000U | static_cast<quint32>(contents.size()));
            return QByteArray::fromHex(id) + QByteArray(reinterpret_cast<const char*>(&size), 4) + contents;
        };
        QByteArray tracks;
        for (int i = 1; i < 400; ++i)
            tracks +=
                element("ae", element("d7", QByteArray(1, static_cast<char>(i % 120))) +
                                  element("83", i % 2 ? "\x11" : "\x01") + element("86", "S_TEXT/UTF8") +
                                  element("536e", QByteArray(5000, 'n')));
        QByteArray clusters;
        for (int i = 0; i < 3000; ++i) {
            const char time[] = {static_cast<char>(i >> 4), static_cast<char>(i << 4), 0};
            QByteArray blocks = element("e7", QByteArray(time, 3));
            for (char ticks = 0; ticks < 40; ++ticks)
                blocks += element(
                    "a3", QByteArray(1, static_cast<char>(0x80 + i % 120)) + '\0' + ticks + '\0' + 'x');
            clusters += element("1f43b675", blocks) + (i % 2 ? "junk" : "");
        }
        const QByteArray movie =
            element("1a45dfa3", "") + element("18538067", element("1654ae6b", tracks) + clusters);
        const Scratch scratch;
        const QString path = scratch.holding(movie);
        const std::size_t before = mostAllocated = allocated;
        const media::Reading reading = media::read(path);
        QVERIFY2(mostAllocated - before < kMostMemory, qPrintable(QString::number(mostAllocated - before)));
        QVERIFY(reading.tracks.size() == 256 && reading.damage.size() == 1000 && reading.damageTotal > 1000);
        QVERIFY(reading.tracks[100].linesLeftOut > 0 || reading.tracks[101].linesLeftOut > 0);
    }

private:
    static QByteArray mutated(QByteArray bytes, QRandomGenerator& random) {
        static constexpr quint64 kNumbers[] = {0,
                                               1,
                                               0x7F,
                                               0x80,
                                               0xFFFF,
                                               0x7FFFFFFF,
                                               0x80000000,
                                               0xFFFFFFFF,
                                               ~quint64{0},
                                               quint64{1} << 63U,
                                               0x01FFFFFFFFFFFFFE};
        for (int changes = random.bounded(1, 6); changes > 0 && !bytes.isEmpty(); --changes) {
            // Half of them where the descriptions are.
            const qsizetype ends = std::min<qsizetype>(bytes.size(), 6000);
            qsizetype place = random.bounded(bytes.size());
            if (random.bounded(2) == 0)
                place = random.bounded(2) == 0 ? place % ends : bytes.size() - 1 - place % ends;
            const quint64 number =
                qToBigEndian(kNumbers[random.bounded(static_cast<int>(std::size(kNumbers)))]);
            const auto width = qsizetype{1} << random.bounded(4);
            switch (random.bounded(6)) {
                case 0:
                    bytes[place] = static_cast<char>(bytes[place] ^ 1 << random.bounded(8));
                    break;
                case 1:
                    bytes[place] = static_cast<char>(random.generate());
                    break;
                case 2:
                    bytes.replace(place, width, reinterpret_cast<const char*>(&number) + 8 - width, width);
                    break;
                case 3:
                    bytes.remove(place, random.bounded(64));
                    break;
                case 4:
                    bytes.insert(place, bytes.mid(random.bounded(bytes.size()), random.bounded(256)));
                    break;
                default:
                    bytes.replace(place, random.bounded(300),
                                  QByteArray(random.bounded(300), random.bounded(2) ? '\0' : 'x'));
            }
        }
        return bytes;
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(RealMoviesTest)
#include "tst_RealMovies.moc"
