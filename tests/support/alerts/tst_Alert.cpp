#include "fakes/Logged.h"
#include "fakes/OpenedMail.h"
#include "fakes/TestHome.h"
#include "support/alerts/Alert.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/base/Format.h"
#include "support/processes/Dispatch.h"
#include "support/reports/ProblemReport.h"
#include "support/reports/QuillonLib.h"

#include <thread>

class AlertTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answersAndLogs() {
        TestHome home;
        home.presenter.answer.response = kAlertSecondButton;
        QCOMPARE(alert("Title", "two\nlines", "OK", "Cancel"), 1001);
        QCOMPARE(home.presenter.shown.first().buttons.size(), 2U);
        QVERIFY(logged().contains("Alert: Title - twolines") && logged().contains("Alert: finished 1001"));
        alert_apptitled("message", "OK");
        QCOMPARE(home.presenter.shown.last().title, "Ravelin");
        bool pressed = false;
        alert_nonmodal_customicon_block("T", "M", "OK", "icon", [&] { pressed = true; });
        home.presenter.shownNonModal.first().completion(false);
        QVERIFY(pressed);
    }

    void controls() {
        TestHome home;
        home.presenter.answer = {kAlertSecondButton, false, "2"};
        QString line, hidden, lines, colour = "#123456";
        bool state = false;
        qsizetype item = 0, radio = 0;
        const QStringList many{"1", "2", "3", "4"};
        const QStringList items{QString(150, 'a'), QString(80, 'b') + QString(71, 'c')};
        for (const long answer :  // In the order of AlertControl.
             {alert_input("P", many, line), alert_inputsecure("P", many, hidden),
              alert_checkbox("T", "P", many, "Box", state), alert_colorwell("P", many, colour),
              alert_inputtext("P", many, lines), alert_outputtext("P", "old", many),
              alert_selection_popup("P", many, items, item), alert_selection_matrix("P", many, items, radio)})
            QCOMPARE(answer, kAlertSecondButton);
        const auto& shown = home.presenter.shown;
        for (qsizetype i = 0; i < 8; ++i) {
            QCOMPARE(shown[i].control, static_cast<AlertControl>(i + 1));
            QVERIFY(shown[i].message == u"P" && shown[i].buttons.size() == 3);
        }
        QCOMPARE(QStringList({line, hidden, lines, colour}), QStringList(4, "2"));
        QVERIFY(state && item == 2 && radio == 2);
        QVERIFY(shown[3].value == "#123456" && shown[5].value == "old");
        QCOMPARE(shown[7].items, QStringList({items[0], QString(70, 'b') + " […] " + QString(70, 'c')}));
    }

    void suppressedForThisVersion() {
        TestHome home;
        const auto ask = [] {
            alert_dontwarnagain_version("identifier", "Warning", "text", "OK", "Don't warn again");
        };
        ask();
        ask();
        QCOMPARE(home.presenter.shown.size(), 2);  // Not ticked: it is shown again.
        home.presenter.answer.suppressed = true;
        ask();
        ask();
        QCOMPARE(home.presenter.shown.size(), 3);
        QCOMPARE(defaultInt("_identifier_1.0.0_asked"), 1);
        setDefaultInt("_identifier_1.0.0_asked", 0);
        setDefaultInt("_identifier_0.9_asked", 1);
        ask();
        QCOMPARE(home.presenter.shown.size(), 4);  // The answer in another version does not count.
    }

    void suppressedPermanently() {
        TestHome home;
        home.presenter.answer = {kAlertSecondButton, true, {}};
        alert_dontwarnagain_ever("identifier", "Error", "text", "OK", "Don't warn again");
        QCOMPARE(defaultInt("_identifier_asked"), 1);
        alert_dontwarnagain_ever("identifier", "Error", "text", "OK", "Don't warn again");
        QCOMPARE(home.presenter.shown.size(), 1);
        for (const long answer : {kAlertSecondButton, -1L})
            QCOMPARE(_alert_dontwarnagain_prefs("key", "T", "M", "OK", "Cancel", "Box"), answer);
    }

    void movesToTheMainThread() {
        TestHome home;
        std::thread([] { alert_dontwarnagain_ever("identifier", "T", "M", "OK", "Box"); }).join();
        QVERIFY(home.presenter.shown.isEmpty());
        QTRY_COMPARE(home.presenter.shown.size(), 1);
    }

    void longDetailsAreCutInTheAlertOnly() {
        const TestHome home;
        const QString fits(400, 'x');
        QVERIFY(problemreport::alertText("M", fits).endsWith("Information: " + fits));
        const QString tooLong(401, 'x');
        QVERIFY(problemreport::alertText("M", tooLong).endsWith(fits + "  …\n(Remaining message omitted)"));
        QVERIFY(problemreport::compose("M", tooLong, true).body.contains(tooLong));
    }

    void problemReport() {
        TestHome home;
        setDefaultString("travels", "with the report");
        home.presenter.answer.response = kAlertSecondButton;
        alert_feedback_nonfatal("A & B", "1 & 2");
        QVERIFY(home.desktop.opened.isEmpty());
        home.presenter.answer.response = kAlertFirstButton;
        alert_feedback_nonfatal("A & B", "1 & 2");
        QCOMPARE(home.presenter.shown.size(), 3);  // The two reports, and one preview of the mail.
        QVERIFY(home.presenter.shown.last().value.toString().contains("\"with the report\""));
        const OpenedMail mail(home.desktop.opened.first());
        QCOMPARE(mail.address, "support@ravelin.example");
        QCOMPARE(mail.subject, "Ravelin v1.0.0 (1) Problem Report");
        QVERIFY(mail.body.startsWith(
            "Hello\nA  error in Ravelin occurred (A & B).\n\nBye\n\nP.S. Details: 1 & 2\n"));
    }

    void dispatching() {
        QString order;
        dispatch_async_main([&] { order += 'b'; });
        dispatch_sync_main([&] { order += 'a'; });
        QCOMPARE(order, "a");
        std::thread waiting([&] { dispatch_sync_main([&] { order += 'c'; }); });
        QTRY_COMPARE(order, "abc");
        waiting.join();
        QVERIFY(dispatch_sync_back_timeout([] {}, 60));
        QVERIFY(dispatch_async_to_sync_resulthandler<bool>(
            [](const auto& handler) { dispatch_async_back([handler] { handler(!isMainThread()); }); }));
        dispatch_async_back([&] { dispatch_after_main([&] { order += 'd'; }, 0.01F); });
        QTRY_COMPARE(order, "abcd");
    }
};

QTEST_GUILESS_MAIN(AlertTest)
#include "tst_Alert.moc"
