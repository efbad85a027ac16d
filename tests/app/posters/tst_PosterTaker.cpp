#include "app/posters/PosterTaker.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>

#include <cerrno>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

constexpr int kPatience = 60000;  // ms
constexpr QSize kSize(96, 54);

/// How the movies are made: red, after half a second green, after two seconds blue; ten seconds.
constexpr const char* kColours =
    "color=black:s=320x180:r=10:d=10,geq=r=if(lt(T\\,0.5)\\,255\\,0):g=if(between(T\\,0.5\\,2)\\,255\\,0):"
    "b=if(gt(T\\,2)\\,255\\,0)";

void make(const QStringList& arguments) {
    QProcess process;
    process.start("ffmpeg", QStringList{"-v", "error", "-y"} + arguments);
    if (!process.waitForFinished(kPatience) || process.exitCode() != 0)
        qFatal("ffmpeg: %s", process.readAllStandardError().constData());
}

QString colour(const QByteArray& rgb) {
    if (rgb.isEmpty()) return "none";
    if (rgb.size() != qsizetype{3} * kSize.width() * kSize.height()) return "wrong size";
    const char* middle = rgb.constData() + 3 * (kSize.width() * kSize.height() / 2 + kSize.width() / 2);
    QString name;
    for (int i = 0; i < 3; ++i)
        name += static_cast<uchar>(middle[i]) > 150 ? QStringLiteral("rgb")[i] : QChar('-');
    return name;
}

/// What the taker gives; "late" if it gives nothing in time.
QByteArray take(const PosterRequest& request) {
    PosterTaker taker;
    QSignalSpy taken(&taker, &PosterTaker::taken);
    taker.take(request);
    return taker.isBusy() && taken.wait(kPatience) && !taker.isBusy() ? taken.first().first().toByteArray()
                                                                      : "late";
}

bool hasChildren() {
    return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

}  // namespace

class PosterTakerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        make({"-f", "lavfi", "-i", kColours, "-f", "lavfi", "-i", "sine=d=10", "-c:v", "mpeg4", "-g", "5",
              "-c:a", "ac3", movie("movie.mkv")});
        make({"-f", "lavfi", "-i", "color=white:s=640x640", "-frames:v", "1", movie("cover.png")});
        make({"-i", movie("movie.mkv"), "-c", "copy", "-attach", movie("cover.png"), "-metadata:s:t",
              "mimetype=image/png", movie("cover.mkv")});
        make({"-i", movie("cover.png"), "-i", movie("movie.mkv"), "-map", "0", "-map", "1:v", "-c", "copy",
              "-disposition:v:0", "attached_pic", movie("cover.mp4")});
        make({"-i", movie("movie.mkv"), "-i", movie("cover.png"), "-map", "0:a", "-map", "1", "-c", "copy",
              "-disposition:v:0", "attached_pic", movie("sound.m4a")});
        make({"-f", "lavfi", "-i", "color=red:s=2000x16:d=1", "-c:v", "mpeg4", movie("wide.mkv")});
        make({"-f", "lavfi", "-i", "color=red:s=16x2000:d=1", "-c:v", "mpeg4", movie("high.mkv")});
        QFile whole(movie("movie.mkv"));
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QByteArray bytes = whole.readAll();
        write("cut.mkv", bytes.left(20000));
        write("holed.mkv", QByteArray(bytes).replace(20000, 40000, QByteArray(40000, 'x')));
        write("nonsense.mkv", QByteArray(100000, 'x'));
    }

    void aFrameFromTheFirstTenth_data() {
        addRows<QStringList, int, QString>({
            {"ten percent", {"movie.mkv"}, 10, "-g-"},
            {"of a longer one", {"movie.mkv"}, 50, "--b"},
            {"duration unknown", {"movie.mkv"}, -1, "r--"},
            {"with a cover", {"cover.mkv"}, 10, "-g-"},
            {"with a cover in front", {"cover.mp4"}, 10, "-g-"},
            {"sound and a cover", {"sound.m4a"}, 10, "none"},
            {"wide", {"wide.mkv"}, 1, "r--"},
            {"high", {"high.mkv"}, 1, "r--"},
            {"ends in front of it", {"cut.mkv"}, 100, "-g-"},
            {"damaged", {"holed.mkv"}, 10, "-g-"},
            {"nonsense", {"nonsense.mkv"}, 10, "none"},
            {"gone", {"gone.mkv"}, 10, "none"},
            {"gone, but converted", {"gone.mkv", "movie.mkv"}, 10, "-g-"},
        });
    }
    void aFrameFromTheFirstTenth() {
        const auto [names, seconds, expected] = row<QStringList, int, QString>();
        qunsetenv("RAVELIN_RESOURCES");
        const TestHome home;
        PosterRequest request{{}, seconds < 0 ? std::nullopt : std::optional(seconds), kSize};
        for (const QString& name : names)
            request.paths.append(movie(name));
        QCOMPARE(colour(take(request)), expected);
    }

    void whateverTheToolDoes_data() {
        addRows<QByteArray, QByteArray>(
            {{"gives way", "nice", "19\n"},
             {"nothing there", "case \"$*\" in *' 0.000 '*) printf xyz; esac", "xyz"},
             {"messages are no pixels", "printf xyz; echo no >&2; exit 1", "xyz"},
             {"too little", "printf xy", {}},
             {"too much", "printf wxyz", {}},
             {"without an end", "exec yes", {}},
             {"closes its output", "printf xyz; exec >&-; sleep 1", "xyz"}});
    }
    void whateverTheToolDoes() {
        const auto [script, expected] = row<QByteArray, QByteArray>();
        const TestHome home;
        useTool(home, script);
        QCOMPARE(take({{home.write("a.mkv")}, 10, QSize(1, 1)}), expected);
        QVERIFY(!hasChildren());
    }

    void cancelled() {
        const TestHome home;
        useTool(home, "exec sleep 1000");
        PosterTaker taker;
        const QSignalSpy taken(&taker, &PosterTaker::taken);
        taker.take({{home.write("a.mkv")}, 10, QSize(1, 1)});
        QTRY_VERIFY_WITH_TIMEOUT(hasChildren(), kPatience);
        taker.cancel();
        QVERIFY(!taker.isBusy() && !hasChildren());
        QCoreApplication::processEvents();
        QCOMPARE(taken.count(), 0);
    }

private:
    QString movie(const QString& name) const { return m_folder.filePath(name); }
    void write(const QString& name, const QByteArray& bytes) const {
        QFile file(movie(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    static void useTool(const TestHome& home, const QByteArray& script) {
        const QString tool = home.write("resources/ffmpeg", "#!/bin/sh\n" + script + '\n');
        QFile::setPermissions(tool, QFile::ReadOwner | QFile::ExeOwner);
        qputenv("RAVELIN_RESOURCES", home.path("resources").toUtf8());
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(PosterTakerTest)
#include "tst_PosterTaker.moc"
