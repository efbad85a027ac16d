#include "app/destinations/Destinations.h"
#include "fakes/RecordingPanels.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"

#include <QDir>
#include <QTest>

namespace {

/// "ask|next|-|movies|-|choose" and the like.
QString layoutOf(const DestinationPopUp& popUp) {
    QStringList parts;
    for (const DestinationItem& item : popUp.items()) {
        switch (item.kind) {
            case DestinationItem::Kind::Ask:
                parts.append("ask");
                break;
            case DestinationItem::Kind::NextToSource:
                parts.append("next");
                break;
            case DestinationItem::Kind::Folder:
                parts.append(item.title);
                break;
            case DestinationItem::Kind::Separator:
                parts.append("-");
                break;
            case DestinationItem::Kind::Choose:
                parts.append("choose");
                break;
            case DestinationItem::Kind::Clear:
                parts.append("clear");
                break;
        }
    }
    return parts.join('|');
}

class Home : public TestHome {
public:
    QString folder(const QString& name) const {
        QDir(path()).mkpath(name);
        return QDir(path(name)).canonicalPath();
    }
    void store(const QStringList& folders) const {
        QVariantList bookmarks;
        QVariantList names;
        for (const QString& folder : folders) {
            bookmarks.append(folder.toUtf8());
            names.append(QDir(folder).dirName());
        }
        setDefaultArray(kDestinationBookmarksKey, bookmarks);
        setDefaultArray(kDestinationNamesKey, names);
        setDefaultInt(kHasUpgradedFromPre13Key, 1);
    }
};

}  // namespace

class DestinationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void storedFoldersStandBetweenTheFixedItems() {
        const Home home;
        RecordingPanels panels;
        home.store({home.folder("movies"), home.folder("series")});
        Destinations destinations(panels);
        destinations.restoreAtLaunch();
        destinations.rebuildDestinationPopUp();
        QCOMPARE(layoutOf(destinations.destinationPopUp()), "ask|next|-|movies|series|-|choose");
        QCOMPARE(layoutOf(destinations.preferencesDestinationPopUp()),
                 "ask|next|-|movies|series|-|choose|clear");

        setDefaultInt(kDefaultDestinationKey, 4);
        destinations.clearDestinations();
        QCOMPARE(layoutOf(destinations.destinationPopUp()), "ask|next|-|choose");
        QCOMPARE(layoutOf(destinations.preferencesDestinationPopUp()), "ask|next|-|choose|clear");
        QCOMPARE(destinations.destinationPopUp().selected(), 0);
        QCOMPARE(defaultInt(kDefaultDestinationKey), 0);
        QCOMPARE(destinations.openedFolders().size(), 2);  // They stay open in this run.
    }

    void launchPutsTheDefaultRight_data() {
        QTest::addColumn<int>("stored");
        QTest::addColumn<bool>("fromOldVersion");
        QTest::addColumn<int>("folders");
        QTest::addColumn<int>("expected");
        QTest::newRow("beyond the folders") << 9 << false << 2 << 3;
        QTest::newRow("last folder") << 4 << false << 2 << 4;
        QTest::newRow("separator") << 2 << false << 2 << 0;
        QTest::newRow("none stored, a folder") << 3 << false << 0 << 1;
        QTest::newRow("old version, next to") << 1 << true << 0 << 0;
        QTest::newRow("old version, first folder") << 2 << true << 1 << 3;
        QTest::newRow("old version, ask") << 0 << true << 1 << 0;
        QTest::newRow("negative") << -1 << false << 1 << 0;
    }
    void launchPutsTheDefaultRight() {
        QFETCH(const int, stored);
        QFETCH(const bool, fromOldVersion);
        QFETCH(const int, folders);
        QFETCH(const int, expected);
        const Home home;
        RecordingPanels panels;
        QStringList paths;
        for (int i = 0; i < folders; ++i)
            paths.append(home.folder(QString::number(i)));
        home.store(paths);
        setDefaultInt(kHasUpgradedFromPre13Key, fromOldVersion ? 0 : 1);
        setDefaultInt(kDefaultDestinationKey, stored);
        Destinations destinations(panels);
        destinations.restoreAtLaunch();
        QCOMPARE(defaultInt(kDefaultDestinationKey), expected);
        QCOMPARE(defaultInt(kHasUpgradedFromPre13Key), 1);
        QCOMPARE(destinations.preferencesDestinationPopUp().selected(), expected);
    }

    void goneFoldersAreForgotten() {
        const Home home;
        RecordingPanels panels;
        const QString file = home.write("file");
        home.store({home.path("gone"), home.folder("b"), file, home.folder("d")});
        Destinations destinations(panels);
        destinations.restoreAtLaunch();
        QCOMPARE(defaultArray(kDestinationNamesKey).value(), QVariantList({"b", "d"}));
        QCOMPARE(defaultArray(kDestinationBookmarksKey)->size(), 2);
        QCOMPARE(destinations.openedFolders().size(), 2);
        QVERIFY(destinations.openedFolders().first().securityScoped);
        QCOMPARE(folderaccess::openAccesses(home.path("b")), 0);
    }

    void choosingStoresAndSelects_data() {
        QTest::addColumn<bool>("onTheSheet");
        QTest::addColumn<int>("defaultAfter");
        QTest::newRow("preferences") << false << 4;
        QTest::newRow("add sheet") << true << 0;
    }
    void choosingStoresAndSelects() {
        QFETCH(const bool, onTheSheet);
        QFETCH(const int, defaultAfter);
        Home home;
        RecordingPanels panels;
        home.store({home.folder("a")});
        Destinations destinations(panels);
        destinations.restoreAtLaunch();
        destinations.rebuildDestinationPopUp();
        const auto place =
            onTheSheet ? DestinationPopUp::Place::AddSheet : DestinationPopUp::Place::Preferences;
        destinations.chooseNewDestination(place);  // Cancelled.
        QCOMPARE(defaultArray(kDestinationNamesKey)->size(), 1);

        panels.folder = home.folder("b");
        destinations.chooseNewDestination(place);
        QCOMPARE(panels.requests.last().over == FilePanels::Over::MainWindow, onTheSheet);
        DestinationPopUp& asked =
            onTheSheet ? destinations.destinationPopUp() : destinations.preferencesDestinationPopUp();
        QCOMPARE(asked.selected(), 4);
        QCOMPARE(asked.items()[4].title, "b");
        QCOMPARE(defaultInt(kDefaultDestinationKey), defaultAfter);
        QCOMPARE(destinations.openFolder(1), home.path("b"));
        folderaccess::stopAccessing(home.path("b"));

        // The same folder by another way is the same.
        QVERIFY(QFile::link(home.path("b"), home.path("link")));
        panels.folder = home.path("link");
        destinations.chooseNewDestination(place);
        QVERIFY(home.presenter.messages().last().startsWith("This destination is already bookmarked."));
        QCOMPARE(home.presenter.shown.last().buttons.front().title, "D'oh");
        QCOMPARE(home.presenter.shown.last().window,
                 onTheSheet ? AlertWindow::Main : AlertWindow::Preferences);
        QCOMPARE(asked.selected(), 0);
        QCOMPARE(defaultInt(kDefaultDestinationKey), 0);
        QCOMPARE(defaultArray(kDestinationNamesKey)->size(), 2);
    }

    void aFolderThatVanishedIsAProblem() {
        const Home home;
        RecordingPanels panels;
        home.store({home.folder("a")});
        Destinations destinations(panels);
        destinations.restoreAtLaunch();
        QVERIFY(destinations.problemOfFolder(0).isEmpty());
        QDir().rmdir(home.path("a"));
        QVERIFY(destinations.problemOfFolder(0).contains(home.path("a")));
        QVERIFY(!destinations.problemOfFolder(7).isEmpty());
        QVERIFY_THROWS_EXCEPTION(BookmarkProblem, destinations.openFolder(0));
    }

    void theLastOpenedFolderThatBeginsThePathWins() {
        const Home home;
        RecordingPanels panels;
        Destinations destinations(panels);
        destinations.addOpenedFolder("/m");
        destinations.addOpenedFolder("/m/a");
        destinations.addOpenedFolder("/x");
        QCOMPARE(destinations.openedFolderFor("/m/a/b.mp4")->path, "/m/a");
        QCOMPARE(destinations.openedFolderFor("/movies/b.mp4")->path, "/m");
        QVERIFY(!destinations.openedFolderFor("/y/b.mp4"));
    }
};

QTEST_GUILESS_MAIN(DestinationsTest)
#include "tst_Destinations.moc"
