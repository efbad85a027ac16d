#include "fakes/LaunchedApplication.h"
#include "fakes/Table.h"
#include "settings/Settings.h"

#include <QSignalSpy>

namespace {

constexpr int kLongEnough = 30000;  // ms
constexpr auto kGoesOn = "Ravelin goes on converting";
constexpr auto kStays = "Ravelin stays open";

using Launched = LaunchedApplication;

/// What is under way when the window is closed.
const QHash<QString, void (*)(Launched&)> kSituations = {
    {"nothing", [](Launched&) {}},
    {"the setting", [](Launched&) { settings::StayOpen.setValue(true); }},
    {"a conversion",
     [](Launched& app) {
         app.tool.setConversion(FakeTool::waitFor(app.path("never")));
         QVERIFY(app.confirm("a.mkv"));
         QTRY_COMPARE(app.queue().jobCountWithState(JobState::Converting), 1);
     }},
    {"a paused queue",
     [](Launched& app) {
         app.queue().pauseContinueClicked(true);
         QVERIFY(app.confirm("a.mkv"));
     }},
    {"a movie on the sheet", [](Launched& app) { QVERIFY(app.open({"a.mkv"})); }},
    {"a probe",
     [](Launched& app) {
         app.tool.setProbe("exec sleep 1000");
         app.delegate.openFiles({app.write("a.mkv")});
     }},
    {"a search",
     [](Launched& app) {
         app.write("in/a.txt");
         app.delegate.openFiles({app.path("in")});
     }},
    {"a failed movie",
     [](Launched& app) {
         app.tool.setConversion("exit 1\n");
         QVERIFY(app.confirm("a.mkv"));
         QTRY_COMPARE(app.queue().jobCountWithState(JobState::Failed), 1);
         app.desktop.notifications.clear();
     }},
    {"an undo",
     [](Launched& app) {
         app.queue().pauseContinueClicked(true);
         QVERIFY(app.confirm("a.mkv"));
         app.queue().removeJobs({app.queue().job(0)});
     }},
    {"a watched folder",
     [](Launched& app) {
         app.write("in/a.txt");
         setDefaultObject("WatchfolderBookmark", app.path("in").toUtf8());
         settings::WatchfolderActive.setValue(true);
     }},
    {"a watched folder that is away",
     [](Launched& app) {
         settings::WatchfolderActive.setValue(true);
         setDefaultObject("WatchfolderBookmark", app.path("away").toUtf8());
     }},
    {"a countdown", [](Launched& app) {
         app.delegate.endAction().choose(EndAction::Kind::Sleep);
         QVERIFY(app.confirm("a.mkv"));
         QTRY_VERIFY(app.delegate.endAction().secondsLeft());
         app.desktop.notifications.clear();
     }}};

}  // namespace

class OpenWindowsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void closingTheWindow_data() {
        // whether the application ends, and the title of the notification
        addRows<bool, QString>({{"nothing", true, {}},
                                {"the setting", false, {}},
                                {"a conversion", false, kGoesOn},
                                {"a paused queue", false, kStays},
                                {"a movie on the sheet", false, kStays},
                                {"a probe", false, kStays},
                                {"a search", false, kStays},
                                {"a failed movie", true, {}},
                                {"an undo", false, {}},
                                {"a watched folder", false, {}},
                                {"a watched folder that is away", false, {}},
                                {"a countdown", false, {}}});
    }
    void closingTheWindow() {
        const auto [ends, title] = row<bool, QString>();
        Launched app;
        app.putOutputsNextToSource();
        QSignalSpy terminating(&app.delegate, &AppDelegate::terminating);
        kSituations[QTest::currentDataTag()](app);
        OpenWindows& windows = app.delegate.openWindows();
        windows.set(true, true);
        windows.set(false, true);  // The help is still read.
        QCOMPARE(terminating.count(), 0);
        windows.set(false, false);
        QCOMPARE(terminating.count(), ends ? 1 : 0);
        QCOMPARE(app.desktop.backgroundReasons.size(), ends ? 0 : 1);
        QCOMPARE(app.presenter.shown.size(), 0);
        QCOMPARE(app.desktop.notifications.size(), title.isEmpty() ? 0 : 1);
        if (title.isEmpty()) return;
        const Notification& told = app.desktop.notifications.first();
        QCOMPARE(told.title, title);
        QCOMPARE(told.action + ' ' + told.quitAction, "Show Quit");
        QVERIFY(told.showsWindow);
        QVERIFY(app.desktop.withdrawn.isEmpty());
        windows.set(true, false);
        QCOMPARE(app.desktop.withdrawn, QStringList(told.group));
    }

    void laterItEndsByItself_data() {
        addRows<QByteArray, bool, bool>({{"converted", "echo movie >$destination\n", false, true},
                                         {"failed", "exit 1\n", false, false},
                                         {"the setting", "echo movie >$destination\n", true, false}});
    }
    void laterItEndsByItself() {
        const auto [conversion, stays, ends] = row<QByteArray, bool, bool>();
        Launched app;
        app.putOutputsNextToSource();
        settings::StayOpen.setValue(stays);
        app.tool.setConversion("wait_until \"[ -e '" + app.path("go").toUtf8() + "' ]\"\n" + conversion);
        OpenWindows windows(
            app.queue(), [&] { return OpenWindows::Work{.isConverting = !app.queue().isIdle()}; },
            std::chrono::milliseconds(0));
        QSignalSpy end(&windows, &OpenWindows::endRequested);
        QSignalSpy settled(&windows, &OpenWindows::settled);
        QVERIFY(app.confirm("a.mkv"));
        windows.set(false, false);
        app.write("go");
        QTRY_VERIFY_WITH_TIMEOUT(app.queue().isIdle(), kLongEnough);
        QCoreApplication::processEvents();  // Its timer does not wait.
        if (ends) {
            QTRY_COMPARE(end.count(), 1);
            QCOMPARE(settled.count(), 1);
            return;
        }
        QCOMPARE(end.count(), 0);
        // The user has seen it.
        windows.set(true, false);
        windows.set(false, false);
        QCOMPARE(end.count(), stays ? 0 : 1);
    }

    void theWindowIsOpenedAgainInTime() {
        Launched app;
        OpenWindows::Work work{.isExpected = true};
        OpenWindows windows(
            app.queue(), [&] { return work; }, std::chrono::milliseconds(0));
        QSignalSpy end(&windows, &OpenWindows::endRequested);
        windows.set(false, false);
        work.isExpected = false;
        windows.reconsider();
        windows.set(true, false);
        QCoreApplication::processEvents();
        QCOMPARE(end.count(), 0);
    }

    void quitFromTheNotification_data() {
        addRows<bool, bool>({{"cancel", true, false}, {"quit", true, true}, {"idle", false, true}});
    }
    void quitFromTheNotification() {
        const auto [converts, quits] = row<bool, bool>();
        Launched app;
        app.putOutputsNextToSource();
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        if (converts) QVERIFY(app.confirm("a.mkv"));
        QSignalSpy front(&app.delegate, &AppDelegate::mainWindowRequested);
        QSignalSpy terminating(&app.delegate, &AppDelegate::terminating);
        app.presenter.answer.response = quits ? kAlertFirstButton : kAlertSecondButton;
        app.presenter.whileShown = [&] {
            QCOMPARE(front.value(0), QVariantList{"token"});  // The question has its window.
            Q_EMIT app.desktop.quitActivated("another click");
        };
        front.clear();
        Q_EMIT app.desktop.quitActivated("token");
        QCOMPARE(app.presenter.shown.size(), converts ? 1 : 0);
        QCOMPARE(terminating.count(), quits ? 1 : 0);
    }

    void arrivals_data() {
        // the window is open, AutoAdd, WatchfolderAutoAdd, destination, how far an arrival gets by itself
        addRows<bool, bool, bool, int, QString>({{"waits", true, false, false, 1, "sheet"},
                                                 {"waits, closed", false, false, false, 1, "sheet"},
                                                 {"without asking", true, false, true, 1, "queue"},
                                                 {"without asking, closed", false, false, true, 1, "queue"},
                                                 {"every movie", false, true, false, 1, "queue"},
                                                 {"destination unknown", true, false, true, 0, "panel"},
                                                 {"nobody to ask", false, false, true, 0, "sheet"}});
    }
    void arrivals() {
        const auto [isOpen, all, arriving, destination, place] = row<bool, bool, bool, int, QString>();
        Launched app;
        app.queue().pauseContinueClicked(true);
        app.putOutputsNextToSource();
        setDefaultInt(kDefaultDestinationKey, destination);
        settings::AutoAdd.setValue(all);
        settings::WatchfolderAutoAdd.setValue(arriving);
        settings::StayOpen.setValue(true);
        app.delegate.openWindows().set(isOpen, false);
        QSignalSpy front(&app.delegate, &AppDelegate::mainWindowRequested);
        Q_EMIT app.delegate.watchFolder().arrived(app.write("in/a.mkv"));
        QCOMPARE(front.count(), isOpen ? 1 : 0);
        QCOMPARE(app.desktop.notifications.size(), isOpen ? 0 : 1);
        if (!isOpen) {
            QCOMPARE(app.desktop.notifications.first().text, "The movie “a.mkv” has arrived.");
            QVERIFY(app.desktop.notifications.first().showsWindow);
        }
        QTRY_COMPARE(app.queue().count(), place == u"queue" ? 1 : 0);
        if (place != u"queue") QTRY_VERIFY(app.isReady());
        QCOMPARE(app.panels.requests.size(), place == u"panel" ? 1 : 0);
        if (place != u"queue") app.sheet().cancelAdd();

        // What the user adds is confirmed by the user.
        app.delegate.openFiles({app.write("in/a.mkv")});
        if (all) return;
        QTRY_VERIFY(app.isReady());
    }
};

QTEST_GUILESS_MAIN(OpenWindowsTest)
#include "tst_OpenWindows.moc"
