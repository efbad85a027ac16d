#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/base/Volume.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTest>

#include <sys/stat.h>

class FilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void extensions_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("stem");
        QTest::newRow("plain") << "/a/movie.mkv"
                               << "mkv"
                               << "/a/movie";
        QTest::newRow("last point") << "/a/movie.en.srt"
                                    << "srt"
                                    << "/a/movie.en";
        QTest::newRow("hidden file") << "/a/.mkv"
                                     << ""
                                     << "/a/.mkv";
        QTest::newRow("point in a folder") << "/a.b/movie"
                                           << ""
                                           << "/a.b/movie";
    }
    void extensions() {
        QFETCH(QString, path);
        QTEST(files::pathExtension(path), "extension");
        QTEST(files::withoutExtension(path), "stem");
    }

    void uniqueNames() {
        const TestHome home;
        const QString path = home.path("movie.mp4");
        QCOMPARE(files::uniqueFile(path), path);
        home.write("movie.mp4");
        QCOMPARE(files::uniqueFile(path), home.path("movie-0.mp4"));
        home.write("movie-0.mp4");
        QCOMPARE(files::uniqueFile(path), home.path("movie-1.mp4"));
        QCOMPARE(files::uniqueFile(home.write("movie")), home.path("movie-0."));
    }

    void brokenLinkOccupiesItsName() {
        const TestHome home;
        QVERIFY(QFile::link(home.path("nowhere"), home.path("movie.mp4")));
        QCOMPARE(files::uniqueFile(home.path("movie.mp4")), home.path("movie-0.mp4"));
    }

    void longNamesFit() {
        const TestHome home;
        const QString stem = QString(u'ü').repeated(125) + "x";  // 251 bytes
        const QString path = home.write(stem + ".mp4");
        const QString unique = files::uniqueFile(path);
        QVERIFY(unique.endsWith("ü-0.mp4"));
        QVERIFY(files::isWriteablePath(unique));
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
        const QString next =
            files::claimUniqueFile(path, [](const QString& name) { return name.endsWith("-1.mp4"); });
        QCOMPARE(next, home.path("movie-2.mp4"));
        QCOMPARE(files::claimUniqueFile("/proc/movie.mp4"), "/proc/movie.mp4");
    }

    void writeablePaths() {
        const TestHome home;
        const QString path = home.path("new.mp4");
        QVERIFY(files::isWriteablePath(path));
        QVERIFY(!QFile::exists(path));
        home.write("new.mp4", "a finished movie");
        QVERIFY(!files::isWriteablePath(path));
        QCOMPARE(files::contents(path).value(), QByteArray("a finished movie"));
        QVERIFY(!files::isWriteablePath(home.path("missing/new.mp4")));
        QVERIFY(!files::isWriteablePath("/proc/new.mp4"));
    }

    void aliases() {
        const TestHome home;
        const QString movie = home.write("movie.mkv", "movie");
        QFile::link(movie, home.path("link.mkv"));
        QFile::link(home.path("gone.mkv"), home.path("dangling.mkv"));
        home.write("alias.mkv", QByteArray("book\0\0\0\0mark\0\0\0\0", 16));
        const auto isAlias = [&](const char* name) {
            return files::fileIsAlias(QUrl::fromLocalFile(home.path(name)));
        };
        QVERIFY(!isAlias("movie.mkv"));
        QVERIFY(!isAlias("link.mkv"));
        QVERIFY(!isAlias("gone.mkv"));
        QVERIFY(isAlias("dangling.mkv"));
        QVERIFY(isAlias("alias.mkv"));
    }

    void aliasTestDoesNotWaitForAPipe() {
        const TestHome home;
        const QString path = home.path("pipe.mkv");
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        QVERIFY(!files::fileIsAlias(QUrl::fromLocalFile(path)));
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

    void temporaryFilesArePrivate() {
        const QString file = files::makeTempFilepath("txt");
        const QString folder = files::makeTempDirectory();
        const auto removed = qScopeGuard([&] { QFile::remove(file), QDir().rmdir(folder); });
        QVERIFY(file.endsWith(".txt") && QFileInfo(file).isFile() && QFileInfo(folder).isDir());
        for (const QString& path : {file, folder}) {
            struct stat status = {};
            QCOMPARE(::stat(QFile::encodeName(path).constData(), &status), 0);
            QCOMPARE(status.st_mode & 077U, 0U);
        }
    }

    void volumes() {
        QVERIFY(volume::freeBytes("/").value() > 0);
        QVERIFY(!volume::freeBytes("/nowhere/at/all"));
        QCOMPARE(volume::maximumFileSizeOfType(0x4d44).value(), quint64{4294967295});
        QVERIFY(!volume::maximumFileSize("/"));
    }
};

QTEST_GUILESS_MAIN(FilesTest)
#include "tst_Files.moc"
