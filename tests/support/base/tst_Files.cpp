#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/base/Volume.h"

#include <sys/stat.h>

class FilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void extensions() {
        QCOMPARE(files::pathExtension("/a/movie.en.mkv"), "mkv");
        QCOMPARE(files::withoutExtension("/a/movie.en.mkv"), "/a/movie.en");
        for (const QString path : {"/a/.mkv", "/a.b/movie"}) {
            QCOMPARE(files::pathExtension(path), "");
            QCOMPARE(files::withoutExtension(path), path);
        }
    }

    void uniqueNames() {
        const TestHome home;
        const QString path = home.path("movie.mp4");
        QCOMPARE(files::uniqueFile(path), path);
        for (const char* next : {"movie-0.mp4", "movie-1.mp4"}) {
            home.write(QFileInfo(files::uniqueFile(path)).fileName());
            QCOMPARE(files::uniqueFile(path), home.path(next));
        }
        QCOMPARE(files::uniqueFile(home.write("movie")), home.path("movie-0."));
        QVERIFY(QFile::link(home.path("nowhere"), home.path("movie-1.mp4")));
        QCOMPARE(files::uniqueFile(path), home.path("movie-2.mp4"));
    }

    void longNamesFit() {
        const TestHome home;
        const QString stem = QString(u'ü').repeated(125) + "x";  // 251 bytes
        const QString path = home.write(stem + ".mp4");
        const QString unique = files::uniqueFile(path);
        QVERIFY(unique.endsWith("ü-0.mp4"));
        QVERIFY(files::isWriteablePath(unique).value_or(true));
        QCOMPARE(files::fittingFileName(QString("😀").repeated(80), ".log"),
                 QString("😀").repeated(62) + ".log");
        const QString plain = QString(u'x').repeated(300);
        QCOMPARE(files::uniqueFile(home.path(plain)), home.path(plain.first(255)));
    }

    void claimedNamesAreTaken() {
        const TestHome home;
        const QString path = home.path("movie.mp4");
        QCOMPARE(files::claimUniqueFile(path), path);
        QCOMPARE(files::claimUniqueFile(path), home.path("movie-0.mp4"));
        const auto isTaken = [](const QString& name) { return name.endsWith("-1.mp4"); };
        QCOMPARE(files::claimUniqueFile(path, isTaken), home.path("movie-2.mp4"));
        QCOMPARE(files::claimUniqueFile("/proc/movie.mp4"), "/proc/movie.mp4");
    }

    void writeablePaths() {
        const TestHome home;
        const QString path = home.path("new.mp4");
        QVERIFY(files::isWriteablePath(path).value_or(true));
        QVERIFY(!QFile::exists(path));
        home.write("new.mp4", "a finished movie");
        QVERIFY(!files::isWriteablePath(path).value());
        QCOMPARE(files::contents(path).value(), QByteArray("a finished movie"));
        QVERIFY(!files::isWriteablePath(home.path("missing/new.mp4")).value());
        QVERIFY(!files::isWriteablePath("/proc/new.mp4").value_or(false));
    }

    void aliases() {
        const TestHome home;
        QFile::link(home.write("movie.mkv", "movie"), home.path("link.mkv"));
        QFile::link(home.path("gone.mkv"), home.path("dangling.mkv"));
        home.write("alias.mkv", QByteArray("book\0\0\0\0mark\0\0\0\0", 16));
        // Nothing waits for a writer.
        QCOMPARE(::mkfifo(QFile::encodeName(home.path("pipe.mkv")).constData(), 0600), 0);
        const auto isAlias = [&](const char* name) {
            return files::fileIsAlias(QUrl::fromLocalFile(home.path(name)));
        };
        for (const char* name : {"movie.mkv", "link.mkv", "gone.mkv", "pipe.mkv"})
            QVERIFY2(!isAlias(name), name);
        QVERIFY(isAlias("dangling.mkv") && isAlias("alias.mkv"));
    }

    void temporaryPlacesArePrivate() {
        const QString file = files::makeTempFilepath("txt");
        const QString folder = files::makeTempDirectory();
        for (const QString& path : {file, folder})
            QVERIFY(!(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther)));
        QVERIFY(file.endsWith(".txt") && QFile::remove(file) && QDir().rmdir(folder));
    }

    void addressesOfOtherKinds() {
        QVERIFY(!files::fileExists(QUrl("https://ravelin.example/")));
        QVERIFY(files::fileExists(QUrl::fromLocalFile("/")));
        const TestHome home;
        const auto size = [](const QString& path) { return files::fileSize(QUrl::fromLocalFile(path)); };
        QCOMPARE(size("/nowhere"), 0U);
        QCOMPARE(size(home.path()), 0U);
        QCOMPARE(size(home.write("movie.mkv", "movie")), 5U);
    }

    void volumes() {
        QVERIFY(volume::freeBytes("/").value() > 0);
        QVERIFY(!volume::freeBytes("/nowhere/at/all"));
        QVERIFY(!volume::freeBytes("/proc"));  // Has no size.
        QCOMPARE(volume::maximumFileSizeOfType(0x4d44).value(), quint64{4294967295});
        QVERIFY(!volume::maximumFileSize("/"));
    }
};

QTEST_GUILESS_MAIN(FilesTest)
#include "tst_Files.moc"
