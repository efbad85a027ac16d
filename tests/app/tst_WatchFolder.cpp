#include "app/FolderWatch.h"
#include "app/WatchFolder.h"
#include "fakes/RecordingPanels.h"
#include "fakes/TestHome.h"
#include "support/Defaults.h"
#include "support/FolderAccess.h"

#include <QDateTime>
#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int kLongEnough = 20000;

/// A watched folder "in" of its own, and what arrived.
class Watched : public TestHome {
public:
    Watched() : arrived(&watch, &FolderWatch::arrived) {
        QDir(path()).mkpath("in");
        if (const QString problem = watch.start(path("in")); !problem.isEmpty())
            qFatal("%s", qPrintable(problem));
    }

    QStringList names() const {
        QStringList result;
        for (const QList<QVariant>& arguments : arrived)
            result.append(QDir(path("in")).relativeFilePath(arguments.first().toString()));
        result.sort();
        return result;
    }

    FolderWatch watch;
    QSignalSpy arrived;
};

}  // namespace

class WatchFolderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatArrivesIsTakenOnce() {
        const Watched home;
        home.write("in/a.mkv", "whole");
        home.write("in/b.MKV", "other case");
        home.write("in/c.mp4", "an output");
        home.write("in/deep/er/a.mkv", "same name");
        home.write("in/deep/d.mkv", "in a new folder");
        home.write("in/e.mkv.part", "downloaded");
        QVERIFY(QFile::rename(home.path("in/e.mkv.part"), home.path("in/e.mkv")));
        home.write("outside.mkv", "moved in");
        QVERIFY(QFile::rename(home.path("outside.mkv"), home.path("in/f \n ä.mkv")));
        QCOMPARE(::mkfifo(QFile::encodeName(home.path("in/pipe.mkv")).constData(), 0600), 0);
        QVERIFY(QDir().mkdir(home.path("in/folder.mkv")));
        QVERIFY(QFile::link(home.path("in"), home.path("in/loop.mkv")));
        home.write("in/z.mkv", "the last one");
        QTRY_VERIFY_WITH_TIMEOUT(home.names().contains("z.mkv"), kLongEnough);
        QTRY_COMPARE_WITH_TIMEOUT(home.names().size(), 5, kLongEnough);
        QStringList expected{"d.mkv", "e.mkv", "f \n ä.mkv", "z.mkv"};
        QStringList found = home.names();
        // Of the two that are called a.mkv one is taken, whichever was seen first.
        QCOMPARE(found.removeIf([](const QString& name) { return QFileInfo(name).fileName() == u"a.mkv"; }),
                 1);
        for (QString& name : found)
            name = QFileInfo(name).fileName();
        QCOMPARE(found, expected);

        // Replaced under its name, and one that comes after it: only the new name counts.
        home.write("in/z.mkv", "again");
        home.write("in/zz.mkv", "new");
        QTRY_VERIFY_WITH_TIMEOUT(home.names().contains("zz.mkv"), kLongEnough);
        QCOMPARE(home.names().count("z.mkv"), 1);
    }

    void aFileWhoseFolderMovesWhileItWaitsIsNotLost() {
        const Watched home;
        QDir(home.path()).mkpath("in/A");
        QFile file(home.path("in/A/moved.mkv"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("whole") == 5 && file.flush());
        // A time that says nothing about how long it stood still: it is waited for another second.
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(1), QFile::FileModificationTime));
        file.close();
        QTRY_COMPARE_WITH_TIMEOUT(home.watch.waiting(), QStringList(file.fileName()), kLongEnough);
        // Looked for under its old name before anybody tells that the folder has moved, and that twice.
        QVERIFY(QDir().rename(home.path("in/A"), home.path("in/B")));
        QVERIFY(QDir().rename(home.path("in/B"), home.path("in/C")));
        QTRY_COMPARE_WITH_TIMEOUT(home.names(), QStringList("C/moved.mkv"), kLongEnough);
    }

    void aSlowWriterIsWaitedFor() {
        const Watched home;
        const int file = ::open(QFile::encodeName(home.path("in/slow.mkv")).constData(),
                                O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        QCOMPARE(::write(file, "half", 4), 4);
        QTRY_COMPARE_WITH_TIMEOUT(home.watch.waiting(), QStringList(home.path("in/slow.mkv")), kLongEnough);
        // A file that came later and is complete is taken while this one is not.
        home.write("in/quick.mkv", "whole");
        QTRY_COMPARE_WITH_TIMEOUT(home.names(), QStringList("quick.mkv"), kLongEnough);
        QCOMPARE(::write(file, "rest", 4), 4);
        ::close(file);
        QTRY_COMPARE_WITH_TIMEOUT(home.names(), QStringList({"quick.mkv", "slow.mkv"}), kLongEnough);
        QVERIFY(home.watch.waiting().isEmpty());
    }

    void theFolderItselfGoes() {
        Watched home;
        QSignalSpy ended(&home.watch, &FolderWatch::ended);
        QVERIFY(QDir(home.path("in")).removeRecursively());
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, kLongEnough);
        QVERIFY(!home.watch.isRunning());
        QVERIFY(!home.watch.start(home.path("in")).isEmpty());
        QDir(home.path()).mkpath("in");
        QVERIFY(home.watch.start(home.path("in")).isEmpty());
        home.write("in/back.mkv", "again");
        QTRY_COMPARE_WITH_TIMEOUT(home.names(), QStringList("back.mkv"), kLongEnough);
    }

    void turnedOnAndOff() {
        TestHome home;
        RecordingPanels panels;
        QDir(home.path()).mkpath("in");
        WatchFolder folder(panels);
        QSignalSpy arrived(&folder, &WatchFolder::arrived);
        setDefaultInt("WatchfolderActive", 1);
        // No folder was chosen: nothing changes.
        QVERIFY(!folder.isWatching());
        QCOMPARE(defaultInt("WatchfolderActive"), 1);

        panels.folder = home.path("in");
        folder.watchfolderSetClicked();
        QCOMPARE(panels.requests.last().over, FilePanels::Over::Preferences);
        QCOMPARE(folder.watchfolderLabel(), "in");
        QVERIFY(folder.isWatching());
        QCOMPARE(folderaccess::openAccesses(folder.folder()), 1);
        home.write("in/a.mkv", "whole");
        QTRY_COMPARE_WITH_TIMEOUT(arrived.count(), 1, kLongEnough);
        QCOMPARE(arrived.first().first().toString(), home.path("in/a.mkv"));

        // The same folder once more: each movie is still told once.
        folder.watchfolderSetClicked();
        home.write("in/b.mkv", "whole");
        QTRY_VERIFY_WITH_TIMEOUT(arrived.count() >= 2, kLongEnough);
        home.write("in/c.mkv", "whole");
        QTRY_VERIFY_WITH_TIMEOUT(arrived.last().first().toString().endsWith("c.mkv"), kLongEnough);
        QCOMPARE(arrived.count(), 3);

        setDefaultInt("WatchfolderActive", 0);
        QVERIFY(!folder.isWatching());
        QCOMPARE(folder.watchfolderLabel(), "in");
        QCOMPARE(folderaccess::openAccesses(folder.folder()), 0);
        QCOMPARE(folder.stateText(), "Off.");
    }

    void aFolderThatIsGoneTurnsItOff() {
        TestHome home;
        RecordingPanels panels;
        setDefaultObject("WatchfolderBookmark", home.path("gone").toUtf8());
        setDefaultInt("WatchfolderActive", 1);
        WatchFolder folder(panels);
        folder.watchfolderActiveClicked();
        QVERIFY(!folder.isWatching());
        QVERIFY(!defaultObject("WatchfolderBookmark").isValid());
        QCOMPARE(defaultInt("WatchfolderActive"), 0);
        QVERIFY(folder.stateText().contains(home.path("gone")));
    }

    void theFolderGoesWhileItIsWatched() {
        TestHome home;
        RecordingPanels panels;
        QDir(home.path()).mkpath("in");
        panels.folder = home.path("in");
        setDefaultInt("WatchfolderActive", 1);
        WatchFolder folder(panels);
        folder.watchfolderSetClicked();
        QVERIFY(QDir(home.path("in")).removeRecursively());
        QTRY_VERIFY_WITH_TIMEOUT(!folder.isWatching(), kLongEnough);
        QCOMPARE(defaultInt("WatchfolderActive"), 0);
        QCOMPARE(home.desktop.notifications.size(), 1);
        // Back again, it can be turned on again.
        QDir(home.path()).mkpath("in");
        setDefaultInt("WatchfolderActive", 1);
        QVERIFY(folder.isWatching());
    }
};

QTEST_GUILESS_MAIN(WatchFolderTest)
#include "tst_WatchFolder.moc"
