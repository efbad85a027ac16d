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
        QCOMPARE(destinations.destinationPopUp().items()[4].title, "b");  // The sheet may be open.
        QCOMPARE(destinations.destinationPopUp().selected(), onSheet ? 4 : 0);
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

    void editing_data() {
        // stored (capitals: not there), preselected, chosen for a movie, edit, stored then, and the two
        // numbers
        addRows<QString, int, int, QString, QString, int, int>(
            {{"rename", "abc", 4, 3, "rename 1 x", "axc", 4, 3},
             {"rename to nothing", "abc", 4, 3, "rename 1  ", "abc", 4, 3},
             {"remove one before", "abc", 4, 5, "remove 0 ", "bc", 3, 4},
             {"remove one behind", "abc", 4, 3, "remove 2 ", "ab", 4, 3},
             {"remove the default", "abc", 4, 5, "remove 1 ", "ac", 0, 4},
             {"remove the chosen one", "abc", 1, 4, "remove 1 ", "ac", 1, 0},
             {"move the default up", "abc", 5, 3, "move 2 0", "cab", 3, 4},
             {"move the default down", "abc", 3, 3, "move 0 1", "bac", 4, 4},
             {"move past the default", "abc", 3, 1, "move 2 0", "cab", 4, 1},
             {"move too far", "abc", 0, 5, "move 0 9", "bca", 0, 4},
             {"none of that number", "abc", 4, 3, "remove 3 ", "abc", 4, 3},
             {"absent ones keep their places", "aBcd", 5, 4, "move 2 0", "dBac", 5, 5},
             {"removal below an absent one", "abCd", 6, 3, "remove 0 ", "bCd", 4, 0},
             {"the default is absent", "aBc", 4, 3, "rename 0 x", "xBc", 0, 3},
             {"the default is absent and one moves", "aBc", 4, 3, "move 1 0", "cBa", 0, 4}});
    }
    void editing() {
        const auto [stored, preselected, chosen, command, then, preselectedThen, chosenThen] =
            row<QString, int, int, QString, QString, int, int>();
        Home home;
        QStringList folders;
        for (const QChar letter : stored)
            folders.append(letter.isUpper() ? home.path(letter) : home.folder(letter));
        home.store(folders);
        setDefaultInt(kDefaultDestinationKey, preselected);
        Destinations& destinations = home.launch();
        destinations.rebuildDestinationPopUp();
        destinations.destinationPopUp().choose(chosen);

        const int number = command.section(' ', 1, 1).toInt();
        const QString argument = command.section(' ', 2);
        if (command.startsWith("rename")) destinations.renameFolder(number, argument);
        if (command.startsWith("remove")) destinations.removeFolder(number);
        if (command.startsWith("move")) destinations.moveFolder(number, argument.toInt());

        QString present = then;
        present.removeIf([](QChar letter) { return letter.isUpper(); });
        QCOMPARE(QVariant(Home::names()).toStringList().join(QString()), present);
        QCOMPARE(defaultArray(kDestinationBookmarksKey)->size(), present.size());
        QCOMPARE(Home::preselected(), preselectedThen);
        QCOMPARE(destinations.preferencesDestinationPopUp().selected(), preselectedThen);
        QCOMPARE(destinations.destinationPopUp().selected(), chosenThen);
        for (qsizetype i = 0; i < present.size(); ++i) {
            const Destinations::StoredFolder folder = destinations.storedFolders()[i];
            QCOMPARE(folder.name, QString(present[i]));
            if (!command.startsWith("rename")) QCOMPARE(folder.path, home.path(folder.name));
        }
        // With the absent ones, in their places.
        for (const QChar letter : then) {
            if (letter.isUpper()) home.folder(letter);
        }
        QTRY_COMPARE(QVariant(Home::names()).toStringList().join(QString()), then);
        if (preselected == 4 && stored[1].isUpper()) QCOMPARE(Home::preselected(), 4);
    }

    void aFolderThatWasAwayHasItsNameAgain() {
        Home home;
        home.store({home.folder("a"), home.folder("b")});
        home.launch().renameFolder(1, "Films");
        for (const char* expected : {"a", "a Films"}) {
            if (QByteArray(expected) == "a") {
                QDir(home.path()).rmdir("b");
            } else {
                home.folder("b");
            }
            Destinations(home.panels).restoreAtLaunch();
            QCOMPARE(QVariant(Home::names()).toStringList().join(' '), expected);
        }
    }

    void whatAnotherProcessDidStays() {
        Home home;
        home.store({home.folder("a"), home.folder("b")});
        setDefaultInt(kDefaultDestinationKey, 4);
        Destinations& destinations = home.launch();
        destinations.rebuildDestinationPopUp();
        standardUserDefaults().synchronise();
        const auto writeElsewhere = [](const QVariantMap& values) {
            SettingsStore other(standardUserDefaults().filePath());
            other.setTogether(values);
            QVERIFY(other.synchronise());
        };
        const auto bookmarks = [&](const QStringList& names) {
            QVariantList list;
            for (const QString& name : names)
                list.append(home.path(name).toUtf8());
            return list;
        };
        writeElsewhere({{kDestinationBookmarksKey, bookmarks({home.folder("c"), "a", "b"})},
                        {kDestinationNamesKey, QVariantList{"c", "a", "b"}},
                        {kDefaultDestinationKey, qint64{5}}});
        destinations.renameFolder(0, "x");  // "a", as far as is known here.
        QCOMPARE(Home::names(), (QVariantList{"c", "x", "b"}));
        QCOMPARE(Home::preselected(), 5);
        destinations.removeFolder(0);
        QCOMPARE(Home::preselected(), 4);

        // The pop-ups follow, also without an edit here, and a name that is missing is that of the folder.
        writeElsewhere({{kDestinationBookmarksKey, bookmarks({"b", "c"})},
                        {kDestinationNamesKey, QVariantList{"Films"}},
                        {kDefaultDestinationKey, qint64{3}}});
        standardUserDefaults().readAgain();
        QTRY_COMPARE(layoutOf(destinations.destinationPopUp()), "ask|next|-|Films|c|-|choose");
        QCOMPARE(destinations.preferencesDestinationPopUp().selected(), 3);
        destinations.moveFolder(1, 0);
        QCOMPARE(Home::names(), (QVariantList{"c", "Films"}));
        QCOMPARE(Home::preselected(), 4);
        const SettingsStore other(standardUserDefaults().filePath());
        QCOMPARE(other.object(kDestinationNamesKey), QVariant(Home::names()));
    }

    void forgettingAllAsks() {
        Home home;
        home.store({home.folder("a")});
        Destinations& destinations = home.launch();
        QVERIFY(!destinations.forgetAll());
        QCOMPARE(home.presenter.shown.last().buttons.front().title, "Keep");
        QCOMPARE(home.presenter.shown.last().window, AlertWindow::Preferences);
        QCOMPARE(Home::names().size(), 1);
        home.presenter.answer.response = kAlertSecondButton;
        QVERIFY(destinations.forgetAll());
        QVERIFY(Home::names().isEmpty());
        QVERIFY(destinations.forgetAll());  // Nothing to ask about.
        QCOMPARE(home.presenter.shown.size(), 2);
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
