#include "fakes/Logged.h"
#include "fakes/OpenedMail.h"
#include "fakes/TestHome.h"
#include "support/alerts/Alert.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/base/Format.h"
#include "support/processes/Dispatch.h"
#include "support/reports/ProblemReport.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"

#include <QTest>

#include <thread>

class AlertTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answersAndLogs() {
        TestHome home;
        home.presenter.answer.response = kAlertSecondButton;
        QCOMPARE(alert("Title", "two\nlines", "OK", "Cancel"), 1001);
        QCOMPARE(home.presenter.shown.first().buttons.size(), 2U);
        const QStringList lines = logged();
        QVERIFY(lines.contains("Alert: Title - twolines"));
        QVERIFY(lines.contains("Alert: finished 1001"));
        alert_apptitled("message", "OK");
        QCOMPARE(home.presenter.shown.last().title, "Ravelin");
        QCOMPARE(home.presenter.shown.last().buttons.size(), 1U);
    }

    void controls() {
        TestHome home;
        home.presenter.answer = {kAlertFirstButton, false, "typed"};
        QString text;
        alert_inputsecure("Password?", {"1", "2", "3", "4"}, text);
        QCOMPARE(text, "typed");
        QCOMPARE(home.presenter.shown.last().control, AlertControl::SecureInput);
        QCOMPARE(home.presenter.shown.last().buttons.size(), 3U);
        QVERIFY(!home.presenter.shown.last().activatesApplication);
        QVERIFY(logged().contains("Alert Input: Password?@"));

        home.presenter.answer.value = 2;
        qsizetype index = 0;
        const QString title = QString(80, 'a') + QString(71, 'b');
        alert_selection_matrix("Which?", {}, {"x", title, QString(150, 'c')}, index);
        QCOMPARE(index, 2);
        QCOMPARE(home.presenter.shown.last().items,
                 (QStringList{"x", QString(70, 'a') + " […] " + QString(70, 'b'), QString(150, 'c')}));
        QVERIFY(logged().contains("Alert Selectionmatrix: finished 1000 2"));

        home.presenter.answer.value = true;
        bool state = false;
        alert_checkbox("T", "M", {"OK"}, "Box", state);
        QVERIFY(state);
        QCOMPARE(home.presenter.shown.last().value, QVariant(false));
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
        QCOMPARE(_alert_dontwarnagain_prefs("my key", "T", "M", "OK", "Cancel", "Box"), 1001);
        const qsizetype lines = logged().size();
        QCOMPARE(_alert_dontwarnagain_prefs("my key", "T", "M", "OK", "Cancel", "Box"), -1);
        QCOMPARE(logged().size(), lines);
    }

    void movesToTheMainThread() {
        TestHome home;
        std::thread([] { alert_dontwarnagain_ever("identifier", "T", "M", "OK", "Box"); }).join();
        QVERIFY(home.presenter.shown.isEmpty());
        QTRY_COMPARE(home.presenter.shown.size(), 1);
    }

    void nonModalButtons() {
        TestHome home;
        bool pressed = false;
        alert_nonmodal_customicon_block("T", "M", "OK", "icon", [&] { pressed = true; });
        home.presenter.shownNonModal.first().completion(false);
        QVERIFY(pressed);
        alert_nonmodal("T", "M", "OK");
        home.presenter.shownNonModal.last().completion(false);  // Without a block nothing happens.
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
        const QString encoded = mail.body.section("Preferences: ", 1).trimmed();
        QVERIFY(QByteArray::fromBase64(encoded.toLatin1()).contains("with the report"));
    }

    void dispatching() {
        QString order;
        dispatch_async_main([&] { order += 'b'; });
        dispatch_sync_main([&] { order += 'a'; });
        dispatch_sync_back([&] { order += isMainThread() ? '?' : 'x'; });
        QCOMPARE(order, "ax");
        std::thread waiting([&] { dispatch_sync_main([&] { order += 'c'; }); });
        QTRY_COMPARE(order, "axbc");
        waiting.join();
        dispatch_async_back([&] { dispatch_after_main([&] { order += 'd'; }, 0.01F); });
        QTRY_COMPARE(order, "axbcd");
        QVERIFY(dispatch_sync_back_timeout([] {}, 10));
        const auto result = dispatch_async_to_sync_resulthandler<QString>(
            [](const auto& handler) { dispatch_async_back([handler] { handler("later"); }); });
        QCOMPARE(result, "later");
    }
};

QTEST_GUILESS_MAIN(AlertTest)
#include "tst_Alert.moc"
