#include "app/watching/MovieArrivals.h"
#include "app/watching/WatchFolder.h"
#include "fakes/RecordingPanels.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"
#include "watch/completion/FileLook.h"

#include <QDateTime>
#include <QDir>
#include <QSignalSpy>
#include <QTest>

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
    Chosen() { QDir(path()).mkpath("in"); }

    RecordingPanels panels;
    WatchFolder folder{panels, nullptr, kQuick};
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
        // Of the two files with the name a.mkv one is added, no matter which was seen first.
        QCOMPARE(found.removeIf([](const QString& name) { return QFileInfo(name).fileName() == u"a.mkv"; }),
                 1);
        for (QString& name : found)
            name = QFileInfo(name).fileName();
        QCOMPARE(found, expected);

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

        home.panels.folder = home.path("in");
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
        if (atLaunch) {
            folder = std::make_unique<WatchFolder>(panels);
            QCOMPARE(folder->resumeAtLaunch().isEmpty(), !activeThen);
            folder.reset();
        }
        QDir(home.path()).mkpath("disk/gone");
        if (atLaunch) {
            folder = std::make_unique<WatchFolder>(panels);
            QCOMPARE(folder->resumeAtLaunch(), QString());
        }
        QTRY_COMPARE(folder->folder(), gone);
        QCOMPARE(folder->isWatching(), activeThen);
        QCOMPARE(defaultInt("WatchfolderActive"), activeThen ? 1 : 0);
        QCOMPARE(defaultObject("WatchfolderBookmark").toByteArray(), gone.toUtf8());
        QVERIFY(!defaultObject("AbsentWatchfolderBookmark").isValid());
    }

    void anotherFolderChosenMeanwhileStays() {
        const TestHome home;
        RecordingPanels panels;
        setDefaultObject("WatchfolderBookmark", home.path("gone").toUtf8());
        setDefaultInt("WatchfolderActive", 1);
        WatchFolder folder(panels);
        folder.resumeAtLaunch();
        QDir(home.path()).mkpath("other");
        panels.folder = home.path("other");
        folder.watchfolderSetClicked();
        QDir(home.path()).mkpath("gone");
        WatchFolder later(panels);
        later.resumeAtLaunch();
        QCOMPARE(later.folder(), home.path("other"));

        folder.forget();
        QVERIFY(!defaultObject("AbsentWatchfolderBookmark").isValid());
    }

    void theFolderGoesWhileItIsWatched() {
        Chosen home;
        WatchFolder& folder = home.folder;
        home.panels.folder = home.path("in");
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
