#include "app/destinations/Destinations.h"
#include "fakes/RecordingPanels.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/store/FolderAccess.h"

#include <QSignalSpy>

namespace {

/// "ask|next|-|movies|-|choose" and the like.
QString layoutOf(const DestinationPopUp& popUp) {
    using enum DestinationItem::Kind;
    static const QMap<DestinationItem::Kind, QString> names = {
        {Ask, "ask"}, {NextToSource, "next"}, {Separator, "-"}, {Choose, "choose"}, {Clear, "clear"}};
    QStringList parts;
    for (const DestinationItem& item : popUp.items())
        parts.append(names.value(item.kind, item.title));
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
    Destinations& launch() {
        destinations.restoreAtLaunch();
        return destinations;
    }
    static QVariantList names() { return defaultArray(kDestinationNamesKey).value(); }
    static int preselected() { return static_cast<int>(defaultInt(kDefaultDestinationKey)); }

    RecordingPanels panels;
    Destinations destinations{panels};
};

}  // namespace

class DestinationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void storedFoldersStandBetweenTheFixedItems() {
        Home home;
        home.store({home.folder("movies"), home.folder("series")});
        Destinations& destinations = home.launch();
        destinations.rebuildDestinationPopUp();
        QCOMPARE(layoutOf(destinations.destinationPopUp()), "ask|next|-|movies|series|-|choose");
        QCOMPARE(layoutOf(destinations.preferencesDestinationPopUp()),
                 "ask|next|-|movies|series|-|choose|clear");

        setDefaultInt(kDefaultDestinationKey, 4);
        destinations.clearDestinations();
        QCOMPARE(layoutOf(destinations.destinationPopUp()), "ask|next|-|choose");
        QCOMPARE(layoutOf(destinations.preferencesDestinationPopUp()), "ask|next|-|choose|clear");
        QCOMPARE(destinations.destinationPopUp().selected(), 0);
        QCOMPARE(Home::preselected(), 0);
        QVERIFY(destinations.openedFolderFor(home.path("movies/x"))->securityScoped);  // While it runs.
    }

    void launchPutsTheDefaultRight_data() {
        addRows<int, bool, int, int>(  // stored, by an old version, folders, expected
            {{"beyond the folders", 9, false, 2, 3},
             {"last folder", 4, false, 2, 4},
             {"separator", 2, false, 2, 0},
             {"none stored, a folder", 3, false, 0, 1},
             {"old version, next to", 1, true, 0, 0},
             {"old version, first folder", 2, true, 1, 3},
             {"old version, ask", 0, true, 1, 0},
             {"negative", -1, false, 1, 0}});
    }
    void launchPutsTheDefaultRight() {
        const auto [stored, fromOldVersion, folders, expected] = row<int, bool, int, int>();
        Home home;
        QStringList paths;
        for (int i = 0; i < folders; ++i)
            paths.append(home.folder(QString::number(i)));
        home.store(paths);
        setDefaultInt(kHasUpgradedFromPre13Key, fromOldVersion ? 0 : 1);
        setDefaultInt(kDefaultDestinationKey, stored);
        Destinations& destinations = home.launch();
        QCOMPARE(Home::preselected(), expected);
        QCOMPARE(defaultInt(kHasUpgradedFromPre13Key), 1);
        QCOMPARE(destinations.preferencesDestinationPopUp().selected(), expected);
    }

    void goneFoldersComeBack_data() {
        // stored, preselected, gone, left, preselected then
        addRows<QString, int, QString, QString, int>(
            {{"one before the default", "abc", 5, "a", "bc", 4},
             {"one behind the default", "abc", 4, "c", "ab", 4},
             {"the default", "abc", 4, "b", "ac", 0},
             {"the default and one before", "abcd", 5, "ac", "bd", 0},
             {"the last, default next to the movie", "ab", 1, "b", "a", 1},
             {"all", "ab", 3, "ab", "", 0}});
    }
    void goneFoldersComeBack() {
        const auto [stored, preselected, gone, left, then] = row<QString, int, QString, QString, int>();
        Home home;
        const auto joined = [] { return QVariant(Home::names()).toStringList().join(QString()); };
        const auto remove = [&] {
            for (const QChar letter : gone)
                QDir(home.path()).rmdir(letter);
        };
        QStringList folders;
        for (const QChar letter : stored)
            folders.append(home.folder(letter));
        home.store(folders);
        setDefaultInt(kDefaultDestinationKey, preselected);
        remove();
        {
            Destinations destinations(home.panels);
            const QString text = destinations.restoreAtLaunch();
            for (const QChar letter : gone)
                QVERIFY2(text.contains(home.path(letter)), qPrintable(text));
            QCOMPARE(joined(), left);
            QCOMPARE(defaultArray(kDestinationBookmarksKey)->size(), left.size());
            QCOMPARE(Home::preselected(), then);

            // While it runs, one folder after the other; the last one is chosen for a movie.
            destinations.rebuildDestinationPopUp();
            const qsizetype last = DestinationPopUp::kFirstFolder + left.size() - 1;
            if (!left.isEmpty()) destinations.destinationPopUp().select(last);
            QSignalSpy message(&destinations, &Destinations::message);
            for (qsizetype i = gone.size(); i-- > 0;) {
                home.folder(gone[i]);
                QTRY_COMPARE(message.count(), gone.size() - i);
            }
            QCOMPARE(joined(), stored);
            QCOMPARE(Home::preselected(), preselected);
            const DestinationPopUp& popUp = destinations.destinationPopUp();
            if (!left.isEmpty()) QCOMPARE(popUp.items()[popUp.selected()].title, left.right(1));
            QCOMPARE(folderaccess::openAccesses(home.path(stored.first(1))), 0);
        }
        // The same at a later launch.
        remove();
        for (int launch = 0; launch < 2; ++launch) {
            Destinations(home.panels).restoreAtLaunch();
            QCOMPARE(Home::preselected(), then);
            QCOMPARE(joined(), left);
        }
        for (const QChar letter : gone)
            home.folder(letter);
        QCOMPARE(Destinations(home.panels).restoreAtLaunch(), QString());
        QCOMPARE(joined(), stored);
        QCOMPARE(Home::preselected(), preselected);
    }

    void whatTheUserChoseMeanwhileStays_data() {
        addRows<QVariantList, int>({{"ask", {"a", "b"}, 0},
                                    {"next to the movie", {"a", "b"}, 1},
                                    {"clear", {}, 0},
                                    {"add", {"b", "a"}, 4}});
    }
    void whatTheUserChoseMeanwhileStays() {
        const auto [names, preselected] = row<QVariantList, int>();
        const QString choice = QTest::currentDataTag();
        Home home;
        home.store({home.path("a"), home.folder("b")});
        setDefaultInt(kDefaultDestinationKey, DestinationPopUp::kFirstFolder);
        {
            Destinations destinations(home.panels);
            destinations.restoreAtLaunch();
            QCOMPARE(Home::preselected(), 0);
            if (choice == u"ask") destinations.setDefaultDestination(0);
            if (choice == u"next to the movie") destinations.setDefaultDestination(1);
            if (choice == u"clear") destinations.clearDestinations();
            home.panels.folder = home.folder("a");
            if (choice == u"add") destinations.chooseNewDestination(DestinationPopUp::Place::AddSheet);
        }
        home.launch();
        QCOMPARE(Home::names(), names);
        QCOMPARE(Home::preselected(), preselected);
    }

    void everyFolderIsOpenButInASandbox() {
        for (const bool sandboxed : {false, true}) {
            Home home;
            home.desktop.sandboxed = sandboxed;
            home.store({home.folder("a"), home.write("file")});
            const Destinations& destinations = home.launch();
            QCOMPARE(destinations.openedFolderFor("/other/b.mp4").has_value(), !sandboxed);
            QVERIFY(destinations.openedFolderFor(home.path("a/b.mp4"))->securityScoped);
            QCOMPARE(destinations.openedFolders().size(), sandboxed ? 1 : 2);
        }
    }

    void choosingStores_data() { addRows<bool, int>({{"preferences", false, 4}, {"add sheet", true, 0}}); }
    void choosingStores() {
        const auto [onSheet, defaultAfter] = row<bool, int>();
        Home home;
        home.store({home.folder("a")});
        Destinations& destinations = home.launch();
        destinations.rebuildDestinationPopUp();
        const auto place = onSheet ? DestinationPopUp::Place::AddSheet : DestinationPopUp::Place::Preferences;
        destinations.chooseNewDestination(place);  // Cancelled.
        QCOMPARE(Home::names().size(), 1);

        home.panels.folder = home.folder("b");
        destinations.chooseNewDestination(place);
        QCOMPARE(home.panels.requests.last().over == FilePanels::Over::MainWindow, onSheet);
        DestinationPopUp& asked =
            onSheet ? destinations.destinationPopUp() : destinations.preferencesDestinationPopUp();
        QCOMPARE(asked.selected(), 4);
        QCOMPARE(asked.items()[4].title, "b");
        QCOMPARE(Home::preselected(), defaultAfter);
        QCOMPARE(destinations.openFolder(1), home.path("b"));
        folderaccess::stopAccessing(home.path("b"));

        // The same folder by another path is the same.
        QVERIFY(QFile::link(home.path("b"), home.path("link")));
        home.panels.folder = home.path("link");
        destinations.chooseNewDestination(place);
        const Alert& told = home.presenter.shown.last();
        QVERIFY(told.message.startsWith("This destination is already bookmarked."));
        QCOMPARE(told.buttons.front().title, "D'oh");
        QCOMPARE(told.window, onSheet ? AlertWindow::Main : AlertWindow::Preferences);
        QCOMPARE(asked.selected(), 0);
        QCOMPARE(Home::preselected(), 0);
        QCOMPARE(Home::names().size(), 2);
    }

    void theLastOpenedFolderThatBeginsThePathWins() {
        Home home;
        Destinations& destinations = home.destinations;
        for (const char* folder : {"/m", "/m/a", "/x"})
            destinations.addOpenedFolder(folder);
        QCOMPARE(destinations.openedFolderFor("/m/a/b.mp4")->path, "/m/a");
        QCOMPARE(destinations.openedFolderFor("/movies/b.mp4")->path, "/m");
        QVERIFY(!destinations.openedFolderFor("/y/b.mp4"));
    }
};

QTEST_GUILESS_MAIN(DestinationsTest)
#include "tst_Destinations.moc"
