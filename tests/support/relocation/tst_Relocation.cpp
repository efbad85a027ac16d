#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/relocation/MountTable.h"
#include "support/relocation/PXAppMovedHandler.h"

#include <sys/inotify.h>

namespace {

constexpr int kLatencyMilliseconds = 50;

/// An application folder, and the record of its restarts.
struct Place : TestHome {
    explicit Place(int latency = kLatencyMilliseconds) {
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
        handler = PXAppMovedHandler::startMoveObservation({giveWay, launch}, path("disk/app"), latency);
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
    QStringList restarts;  ///< The new path at giveWay and at launch.
    std::unique_ptr<PXAppMovedHandler> handler;
};

const QString kMoved =
    "Ravelin: Ravelin has been moved, but applications should never be moved while they are running. "
    "[Restart Ravelin]";

}  // namespace

class RelocationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void volumesAreFoundAgain() {
        const auto point = [](const QByteArray& table) {
            const Mount volume{36, "8:17", "/", "/media/a"};
            return mounttable::found(volume, mounttable::parsed(table)).value_or(Mount()).point;
        };
        const QByteArray other =
            "40 22 8:17 /other /media/x rw - ext4 b rw\n36 22 8:33 / /media/c rw - ext4 c rw\n";
        const QByteArray moved = "36 22 8:17 / /media/my\\040disk\\134 rw shared:1 - ext4 b rw\n";
        const QByteArray again = "51 22 8:17 / /media/b rw - ext4 b rw\n";
        QCOMPARE(point(other + moved), "/media/my disk\\");
        QCOMPARE(point(other + again), "/media/b");
        QCOMPARE(point(moved + again), "/media/my disk\\");
        QCOMPARE(point(other), "");  // Unmounted, and its identifier reused.
        QCOMPARE(point("\n36 22 8:17\n\\04"), "");
    }

    void onlyTheVolumeOfTheApplicationCounts() {
        const auto pathAfter = [](const QString& volume) {
            QString offered;
            const auto offer = [&](const QString& path) { offered = path; };
            PXAppVolumeRenamedObserver{"/media/a/Ravelin/app", offer}.watch(volume, "/new");
            return offered;
        };
        QCOMPARE(pathAfter("/media/a"), "/new/Ravelin/app");
        QCOMPARE(pathAfter("/media/a/Ravelin/app"), "/new");
        QCOMPARE(pathAfter("/"), "/new/media/a/Ravelin/app");
        QCOMPARE(pathAfter("/media/a/Rav"), "");
        QCOMPARE(pathAfter(""), "");
    }

    void onlyAMoveAndNothingElseCounts() {
        const Place place(1'000'000);
        place.move("disk/app", "app");
        // With the end of the volume, with a loss of events, and of the watch alone.
        for (const quint32 mask : {IN_MOVE_SELF | IN_UNMOUNT, IN_MOVE_SELF | IN_Q_OVERFLOW, IN_IGNORED})
            place.handler->MoveCallbackFunction(MoveWatch::flagsOf(mask));
        QCOMPARE(place.told(), QStringList());
        place.handler->MoveCallbackFunction(MoveWatch::flagsOf(IN_MOVE_SELF | IN_ISDIR));
        QCOMPARE(place.told(), QStringList(kMoved));
    }

    void moves_data() {
        addRows<QString, QString, QString, bool>(  // from, to, new path, whether it starts anew
            {{"the folder", "disk/app", "ü a", "ü a", true},
             {"the one above", "disk", "disk 2", "disk 2/app", true},
             {"where it cannot be started", "disk/app", "b", "b", false}});
    }
    void moves() {
        const auto [from, to, newPath, startsAnew] = row<QString, QString, QString, bool>();
        Place place;
        place.startsAnew = startsAnew;
        // While the alert is open, the tool is found, and a further move is followed but not reported.
        QString resources;
        place.presenter.whileShown = [&, moved = newPath] {
            if (place.presenter.shown.size() > 1) return;
            resources = ApplicationInfo::resourceFolder();
            place.move(moved, "last");
            place.handler->MoveCallbackFunction(MoveWatch::kRootChanged);
        };
        place.move(from, to);
        QTRY_COMPARE(place.restarts.size(), 2);
        QCOMPARE(place.restarts, QStringList(2, place.path("last")));
        QCOMPARE(resources, place.path(newPath + "/resources"));
        QStringList told{kMoved};
        if (!startsAnew)
            told.append("Ravelin: Ravelin could not restart itself. Please do so yourself. [Quit]");
        QCOMPARE(place.told(), told);
    }

    void movingAwayAndBackIsIgnored() {
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
