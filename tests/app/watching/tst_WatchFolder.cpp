#include "app/watching/MovieArrivals.h"
#include "app/watching/WatchFolder.h"
#include "fakes/RecordingPanels.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/store/FolderAccess.h"
#include "watch/completion/FileLook.h"
#include "watch/events/DirectoryObserver.h"

#include <QSignalSpy>

#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr int kLongEnough = 20000;
/// A missing file is noticed before the record that reports its new path.
constexpr WatchTimes kQuick = {200ms, {100ms, 300ms, 20ms, 100ms}};

/// A watched folder "in", and the arrived files.
class Watched : public TestHome {
public:
    Watched() : arrived(&watch, &MovieArrivals::arrived) {
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

    MovieArrivals watch{std::make_shared<MovieArrivals::Names>(), nullptr, kQuick};
    QSignalSpy arrived;
};

/// A folder "in" that can be chosen for the watch.
class Chosen : public TestHome {
public:
    Chosen() {
        QDir(path()).mkpath("in");
        panels.folder = path("in");
    }

    RecordingPanels panels;
    WatchFolder folder{panels, nullptr, kQuick};
};

}  // namespace

class WatchFolderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatArrivesIsTakenOnce() {
        const Watched home;
        for (const char* name : {"in/a.mkv", "in/b.MKV", "in/c.mp4", "in/deep/er/a.mkv", "in/deep/d.mkv",
                                 "in/e.mkv.part", "outside.mkv"})
            home.write(name, "whole");
        QVERIFY(QFile::rename(home.path("in/e.mkv.part"), home.path("in/e.mkv")));
        QVERIFY(QFile::rename(home.path("outside.mkv"), home.path("in/f \n ä.mkv")));
        QCOMPARE(::mkfifo(QFile::encodeName(home.path("in/pipe.mkv")).constData(), 0600), 0);
        QVERIFY(QDir().mkdir(home.path("in/folder.mkv")));
        QVERIFY(QFile::link(home.path("in"), home.path("in/loop.mkv")));
        home.write("in/z.mkv", "the last one");
        QTRY_VERIFY_WITH_TIMEOUT(home.names().contains("z.mkv"), kLongEnough);
        QTRY_COMPARE_WITH_TIMEOUT(home.names().size(), 5, kLongEnough);
        QStringList found = home.names();
        // Of the two files with the name a.mkv one is added, no matter which was seen first.
        found.replaceInStrings(QRegularExpression("^(deep/er/)?a"), "a");
        found.sort();
        QCOMPARE(found, QStringList({"a.mkv", "deep/d.mkv", "e.mkv", "f \n ä.mkv", "z.mkv"}));

        // Replaced under its name, and renamed afterwards: only the new name counts.
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
        // A modification time in the future does not show how long the file is unchanged: wait for it.
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(1), QFile::FileModificationTime));
        file.close();
        QTRY_COMPARE_WITH_TIMEOUT(home.watch.waiting(), QStringList(file.fileName()), kLongEnough);
        // Searched under its old name before the move of its folder is reported, twice.
        QVERIFY(QDir().rename(home.path("in/A"), home.path("in/B")));
        QVERIFY(QDir().rename(home.path("in/B"), home.path("in/C")));
        QTRY_COMPARE_WITH_TIMEOUT(home.names(), QStringList("C/moved.mkv"), kLongEnough);
    }

    /// A file with a second name is complete without a close only when it was not opened for writing.
    void whatAnEventSays() {
        using enum CompletionWaiter::Known;
        const auto known = [](quint32 flags) {
            return MovieArrivals::whatIsKnown({"a.mkv", flags, EventContents::Unfinished, {}});
        };
        QCOMPARE(known(kEventItemIsFile | kEventItemCreated | kEventItemModified), Created);
        QCOMPARE(known(kEventItemIsFile | kEventItemModified), Modified);
    }

    void aFileOfTwoNamesIsSeenAsSuch() {
        const TestHome home;
        QCOMPARE(::link(qPrintable(home.write("a.mkv")), qPrintable(home.path("b.mkv"))), 0);
        QVERIFY(lookAt(home.path("a.mkv"), {}).hasOtherNames);
    }

    void turnedOnAndOff() {
        Chosen home;
        WatchFolder& folder = home.folder;
        QSignalSpy arrived(&folder, &WatchFolder::arrived);
        setDefaultInt("WatchfolderActive", 1);
        // No folder was chosen: nothing changes.
        QVERIFY(!folder.isWatching());
        QCOMPARE(defaultInt("WatchfolderActive"), 1);

        folder.watchfolderSetClicked();
        QCOMPARE(home.panels.requests.last().over, FilePanels::Over::Preferences);
        QCOMPARE(folder.watchfolderLabel(), "in");
        QVERIFY(folder.isWatching());
        QCOMPARE(folderaccess::openAccesses(folder.folder()), 1);
        home.write("in/a.mkv", "whole");
        QTRY_COMPARE_WITH_TIMEOUT(arrived.count(), 1, kLongEnough);
        QCOMPARE(arrived.first().first().toString(), home.path("in/a.mkv"));

        // The same folder again: each movie is still reported only once.
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

    void aFolderThatIsGoneTurnsItOff_data() {
        // active, turned over by the user while it is not there, there again at a later launch
        addRows<bool, bool, bool>({{"watched", true, false, false},
                                   {"watched, at a launch", true, false, true},
                                   {"turned off meanwhile", true, true, false},
                                   {"not watched", false, false, true},
                                   {"turned on meanwhile", false, true, true}});
    }
    void aFolderThatIsGoneTurnsItOff() {
        const auto [active, turnedOver, atLaunch] = row<bool, bool, bool>();
        const TestHome home;
        RecordingPanels panels;
        const QString gone = home.path("disk/gone");
        setDefaultObject("WatchfolderBookmark", gone.toUtf8());
        setDefaultInt("WatchfolderActive", active ? 1 : 0);
        auto folder = std::make_unique<WatchFolder>(panels);
        const QString told = folder->resumeAtLaunch();
        QVERIFY(!folder->isWatching());
        QVERIFY(!defaultObject("WatchfolderBookmark").isValid());
        QCOMPARE(defaultInt("WatchfolderActive"), 0);
        QVERIFY(told.contains(gone));
        QCOMPARE(folder->stateText(), "Off. " + told);
        QCOMPARE(told.endsWith("It is watched again when it is."), active);
        if (turnedOver) {
            setDefaultInt("WatchfolderActive", 1);
            setDefaultInt("WatchfolderActive", active ? 0 : 1);
        }
        const bool activeThen = active != turnedOver;
        for (const bool isThere : {false, true}) {
            if (isThere) QDir(home.path()).mkpath("disk/gone");
            if (!atLaunch) continue;
            folder = std::make_unique<WatchFolder>(panels);
            QCOMPARE(folder->resumeAtLaunch().isEmpty(), isThere || !activeThen);
            if (!isThere) folder.reset();
        }
        QTRY_COMPARE(folder->folder(), gone);
        QCOMPARE(folder->isWatching(), activeThen);
        QCOMPARE(defaultInt("WatchfolderActive"), activeThen ? 1 : 0);
        QCOMPARE(defaultObject("WatchfolderBookmark").toByteArray(), gone.toUtf8());
        QVERIFY(!defaultObject("AbsentWatchfolderBookmark").isValid());
    }

    void anotherFolderChosenMeanwhileStays() {
        Chosen home;
        setDefaultObject("WatchfolderBookmark", home.path("gone").toUtf8());
        setDefaultInt("WatchfolderActive", 1);
        home.folder.resumeAtLaunch();
        home.folder.watchfolderSetClicked();
        QDir(home.path()).mkpath("gone");
        WatchFolder later(home.panels);
        later.resumeAtLaunch();
        QCOMPARE(later.folder(), home.path("in"));

        home.folder.forget();
        QVERIFY(!defaultObject("AbsentWatchfolderBookmark").isValid());
    }

    void theFolderGoesWhileItIsWatched() {
        Chosen home;
        WatchFolder& folder = home.folder;
        setDefaultInt("WatchfolderActive", 1);
        folder.watchfolderSetClicked();
        QVERIFY(QDir(home.path("in")).removeRecursively());
        QTRY_VERIFY_WITH_TIMEOUT(!folder.isWatching(), kLongEnough);
        QCOMPARE(defaultInt("WatchfolderActive"), 0);
        QCOMPARE(home.desktop.notifications.size(), 1);
        QDir(home.path()).mkpath("in");
        QTRY_VERIFY_WITH_TIMEOUT(folder.isWatching(), kLongEnough);
        QCOMPARE(defaultInt("WatchfolderActive"), 1);
    }
};

QTEST_GUILESS_MAIN(WatchFolderTest)
#include "tst_WatchFolder.moc"
