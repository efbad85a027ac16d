#include "fakes/TestHome.h"
#include "support/relocation/MountTable.h"
#include "support/relocation/PXAppMovedHandler.h"

#include <QDir>
#include <QTest>

#include <sys/inotify.h>

namespace {

constexpr int kLatencyMilliseconds = 50;

/// An application folder, and what came of its restart.
struct Place : TestHome {
    explicit Place(int latencyMilliseconds = kLatencyMilliseconds) {
        write("disk/app/bin/program");
        qputenv("RAVELIN_RESOURCES", path("disk/app/resources").toUtf8());
        const auto giveWay = [this](const QString& newPath, const Block& launch) {
            restarts.append(newPath);
            launch();
        };
        const auto launch = [this](const QString& newPath) {
            restarts.append(newPath);
            return startsAnew;
        };
        handler =
            PXAppMovedHandler::startMoveObservation({giveWay, launch}, path("disk/app"), latencyMilliseconds);
    }
    ~Place() { qunsetenv("RAVELIN_RESOURCES"); }
    void move(const QString& from, const QString& to) const { QVERIFY(QDir().rename(path(from), path(to))); }
    QStringList told() const {
        QStringList result;
        for (const Alert& alert : presenter.shown)
            result.append(alert.title + ": " + alert.message + " [" + alert.buttons.front().title + "]");
        return result;
    }

    bool startsAnew = true;
    QStringList restarts;  ///< The new path when it gave way, and when it was launched.
    std::unique_ptr<PXAppMovedHandler> handler;
};

const QString kMoved =
    "Ravelin: Ravelin has been moved, but applications should never be moved while they are running. "
    "[Restart Ravelin]";

}  // namespace

class RelocationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void volumesAreFoundAgain_data() {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QByteArray>("point");
        const QByteArray other =
            "40 22 8:17 /other /media/x rw - ext4 b rw\n36 22 8:33 / /media/c rw - ext4 c rw\n";
        const QByteArray moved = "36 22 8:17 / /media/my\\040disk\\134 rw shared:1 - ext4 b rw\n";
        const QByteArray again = "51 22 8:17 / /media/b rw - ext4 b rw\n";
        QTest::newRow("moved") << other + moved << QByteArray("/media/my disk\\");
        QTest::newRow("mounted again") << other + again << QByteArray("/media/b");
        QTest::newRow("mounted twice") << moved + again << QByteArray("/media/my disk\\");
        QTest::newRow("detached, its number given anew") << other << QByteArray();
        QTest::newRow("nonsense") << QByteArray("\n36 22 8:17\n\\04") << QByteArray();
    }
    void volumesAreFoundAgain() {
        QFETCH(const QByteArray, table);
        const Mount volume{36, "8:17", "/", "/media/a"};
        QTEST(mounttable::found(volume, mounttable::parsed(table)).value_or(Mount()).point, "point");
    }

    void onlyTheVolumeOfTheApplicationCounts_data() {
        QTest::addColumn<QStringList>("volumeAndNewPath");
        QTest::newRow("its volume") << QStringList{"/media/a", "/new/Ravelin/app"};
        QTest::newRow("itself") << QStringList{"/media/a/Ravelin/app", "/new"};
        QTest::newRow("everything") << QStringList{"/", "/new/media/a/Ravelin/app"};
        QTest::newRow("begins alike") << QStringList{"/media/a/Rav", ""};
        QTest::newRow("none") << QStringList{"", ""};
    }
    void onlyTheVolumeOfTheApplicationCounts() {
        QFETCH(const QStringList, volumeAndNewPath);
        QString offered;
        const auto offer = [&](const QString& path) { offered = path; };
        PXAppVolumeRenamedObserver{"/media/a/Ravelin/app", offer}.watch(volumeAndNewPath[0], "/new");
        QCOMPARE(offered, volumeAndNewPath[1]);
    }

    void onlyAMoveAndNothingElseCounts_data() {
        QTest::addColumn<quint32>("flags");
        QTest::addColumn<bool>("counts");
        QTest::newRow("move") << MoveWatch::flagsOf(IN_MOVE_SELF | IN_ISDIR) << true;
        QTest::newRow("move and unmount") << MoveWatch::flagsOf(IN_MOVE_SELF | IN_UNMOUNT) << false;
        QTest::newRow("move and loss of events") << MoveWatch::flagsOf(IN_MOVE_SELF | IN_Q_OVERFLOW) << false;
        QTest::newRow("nothing") << MoveWatch::flagsOf(IN_IGNORED) << false;
    }
    void onlyAMoveAndNothingElseCounts() {
        QFETCH(const quint32, flags);
        QFETCH(const bool, counts);
        const Place place(1'000'000);
        place.move("disk/app", "app");
        place.handler->MoveCallbackFunction(flags);
        QCOMPARE(place.told(), counts ? QStringList(kMoved) : QStringList());
    }

    void moves_data() {
        QTest::addColumn<QStringList>("fromToAndNewPath");
        QTest::addColumn<bool>("startsAnew");
        QTest::newRow("the folder") << QStringList{"disk/app", "ü a", "ü a"} << true;
        QTest::newRow("the one above") << QStringList{"disk", "disk 2", "disk 2/app"} << true;
        QTest::newRow("where it cannot be started") << QStringList{"disk/app", "b", "b"} << false;
    }
    void moves() {
        QFETCH(const QStringList, fromToAndNewPath);
        QFETCH(const bool, startsAnew);
        const QString& newPath = fromToAndNewPath[2];
        Place place;
        place.startsAnew = startsAnew;
        // While the user thinks, the tool is found, and a further move is followed but not told.
        QString resources;
        place.presenter.whileShown = [&] {
            if (place.presenter.shown.size() > 1) return;
            resources = ApplicationInfo::resourceFolder();
            place.move(newPath, "last");
            place.handler->MoveCallbackFunction(MoveWatch::kRootChanged);
        };
        place.move(fromToAndNewPath[0], fromToAndNewPath[1]);
        QTRY_COMPARE(place.restarts.size(), 2);
        QCOMPARE(place.restarts, QStringList(2, place.path("last")));
        QCOMPARE(resources, place.path(newPath + "/resources"));
        QStringList told{kMoved};
        if (!startsAnew)
            told.append("Ravelin: Ravelin could not restart itself. Please do so yourself. [Quit]");
        QCOMPARE(place.told(), told);
    }

    void movedAwayAndBackIsNoMove() {
        const Place place;
        place.move("disk/app", "a");
        place.move("a", "disk/app");
        place.handler->MoveCallbackFunction(MoveWatch::kRootChanged);
        QCOMPARE(place.told(), QStringList());
        place.move("disk", "b");
        QTRY_COMPARE(place.restarts.value(1), place.path("b/app"));
    }
};

QTEST_GUILESS_MAIN(RelocationTest)
#include "tst_Relocation.moc"
