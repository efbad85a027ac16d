#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "feedback/PXApplicationDelegate.h"
#include "feedback/PXRatingWindowController.h"
#include "feedback/RatingRules.h"
#include "feedback/UpdateCheck.h"
#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"

#include <QPointer>
#include <QSignalSpy>

namespace {

const QDateTime kNow = QDateTime::fromString("2026-03-01T12:00:00Z", Qt::ISODate);

/// The delegate with a clock set by the test.
class Counting : public TestHome {
public:
    Counting() {
        QObject::connect(&delegate, &PXApplicationDelegate::ratingWindowRequested, [this] { ++requests; });
        delegate.setClock([this] { return now; });
    }
    void use(int usages, bool allow = true, bool force = false) {
        delegate.increaseUsagesBy(usages, 10, 20, "[APPNAME] [USAGES_ASKREVIEW]", allow, force);
    }
    QDateTime now = kNow;
    PXApplicationDelegate delegate;
    int requests = 0;
};

PXRatingWindowController::PageLookup pages(const QStringList& keys) {
    return [keys](const char* key) {
        return keys.contains(QLatin1String(key)) ? "https://a.example" : QString();
    };
}

}  // namespace

class FeedbackTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void due() {
        constexpr qint64 kPause = 98LL * 24 * 60 * 60;
        const QDateTime pauseAgo = kNow.addSecs(-kPause);
        const auto isDue = [](int usages, bool isAsked, bool isTurnedOff, const QDateTime& lastAsked = {}) {
            return rating::isDue({usages, isAsked, isTurnedOff, lastAsked}, 20, kNow);
        };
        QVERIFY(!isDue(19, false, false) && isDue(20, false, false));
        QVERIFY(!isDue(500, true, false, kNow.addSecs(-2 * kPause)));  // By this version.
        QVERIFY(!isDue(500, false, true));
        QVERIFY(!isDue(20, false, false, pauseAgo) && isDue(20, false, false, pauseAgo.addMSecs(-1)));
        QVERIFY(!isDue(20, false, false, kNow.addSecs(kPause)));  // The clock was set back.
        QVERIFY(!rating::isRateable(1000, 0) && rating::isRateable(2, 1));
    }

    void countsAndAsksOnce() {
        Counting app;
        app.use(10);
        QVERIFY(!app.delegate.isRateable());
        app.use(1);
        QVERIFY(app.delegate.isRateable());
        app.use(8);
        QCOMPARE(app.requests, 0);
        app.use(1, false);
        QCOMPARE(defaultInt("quillonlib_usages"), 20);
        QCOMPARE(defaultInt("quillonlib_" + ApplicationInfo::version() + "_usages"), 20);
        QCOMPARE(app.requests, 0);
        app.use(0);
        QCOMPARE(app.requests, 1);
        QCOMPARE(app.delegate.ratingWindowController()->introText(), "Ravelin 20");
        QCOMPARE(defaultObject("quillonlib_askdate").toDateTime(), kNow);
        app.now = kNow.addYears(1);
        app.use(1);
        QCOMPARE(app.requests, 1);
        // The next version starts at zero.
        setDefaultInt("quillonlib_" + ApplicationInfo::version() + "_asked", 0);
        app.use(1);
        QCOMPARE(app.requests, 2);
    }

    void forced() {
        Counting app;
        app.use(0, false, true);
        QCOMPARE(app.requests, 0);
        setDefaultInt("quillonlib_dontaskagain", 1);
        app.use(0, true, true);
        QCOMPARE(app.requests, 1);
        // A manual request does not count as the version's own.
        QVERIFY(!defaultObject("quillonlib_askdate").isValid());
        const QPointer<PXRatingWindowController> first = app.delegate.ratingWindowController();
        app.use(0, true, true);
        QCOMPARE(app.delegate.ratingWindowController(), first);
        first->windowWillClose();
        QVERIFY(!app.delegate.ratingWindowController());
        QTRY_VERIFY(!first);
        app.use(0, true, true);
        QVERIFY(app.delegate.ratingWindowController());
    }

    void reviewButtons() {
        const auto described = [](const QStringList& keys) {
            const PXRatingWindowController controller(pages(keys), {});
            QStringList buttons;
            for (const auto& button : {controller.appStoreButton(), controller.macUpdateButton()})
                buttons.append(button.icon + u'|' + button.title + (button.isEnabled ? "|1" : "|0"));
            return buttons;
        };
        QCOMPARE(described({"StoreProductPage", "AlternativetoProductPage"}).first(), "icon-appstore||1");
        QCOMPARE(described({"AlternativetoProductPage", "FilehorseProductPage"}),
                 (QStringList{"icon-alternativeto|    Rate on AlternativeTo|1",
                              "icon-filehorse|    Rate on FileHorse|1"}));
    }

    void neverAgainNeedsTheSecondButton() {
        TestHome home;
        PXRatingWindowController controller(pages({}), {});
        QSignalSpy closed(&controller, &PXRatingWindowController::closeRequested);
        home.presenter.whileShown = [&] { QCOMPARE(closed.count(), 1); };
        controller.dontshowClicked();
        QCOMPARE(defaultInt("quillonlib_dontaskagain"), 0);
        closed.clear();
        home.presenter.answer.response = kAlertSecondButton;
        controller.dontshowClicked();
        QCOMPARE(defaultInt("quillonlib_dontaskagain"), 1);
        const Alert& alert = home.presenter.shown.last();
        QVERIFY(alert.message.startsWith("Ravelin asks for your feedback only rarely"));
        QCOMPARE(alert.buttons[1].title, "Turn off feedback dialog");
    }

    void feeds_data() {
        // What the alert calls the newest version, "none" or "failed". The feed is null where the download
        // failed.
        addRows<QByteArray, QString>(
            {{"text and number", "<a sparkle:shortVersionString=\"1.1\" sparkle:version=\"2\"/>",
              "'1.1 (2)'"},
             {"empty text", "sparkle:version=\"002\" sparkle:shortVersionString=\"\"", "' (2)'"},
             {"text without end", "sparkle:version=\"2\" sparkle:shortVersionString=\"1.1", "'2 (2)'"},
             {"large", "sparkle:version=\"99999999999\"", "'99999999999 (2147483647)'"},
             {"first counts", "sparkle:version=\"1\" sparkle:shortVersionString=\"7\" sparkle:version=\"2\"",
              "none"},
             {"empty number", "sparkle:version=\"\"", "none"},
             {"points", "sparkle:version=\"1.2.0\" sparkle:version=\"2\"", "failed"},
             {"sign", "sparkle:version=\"+2\"", "failed"},
             {"space", "sparkle:version=\" 2\"", "failed"},
             {"other digits", "sparkle:version=\"٢\"", "failed"},
             {"other spelling", "sparkle:version='2' sparkle:Version=\"2\"", "failed"},
             {"number without end", "sparkle:version=\"2", "failed"},
             {"not UTF-8", "\xFF sparkle:version=\"2\"", "failed"},
             {"no page", {}, "failed"}});
    }
    void feeds() {
        const auto [feed, newest] = row<QByteArray, QString>();
        TestHome home;
        QList<QUrl> asked;
        const Fetcher fetcher = [&, feed = feed](const QUrl& url) {
            asked.append(url);
            return download::Page{url, feed.isNull() ? std::nullopt : std::optional(feed)};
        };
        home.presenter.answer.response = kAlertFirstButton;
        checkForUpdates(fetcher);
        QCOMPARE(asked, {QUrl("https://ravelin.example/appcast.xml")});
        QCOMPARE(home.presenter.shown.size(), 1);
        const Alert alert = home.presenter.shown.first();
        QStringList texts{alert.title, alert.message};
        for (const AlertButton& button : alert.buttons)
            texts.append(button.title);
        const QString failure =
            "The update-check failed - please check your internet connection and try again.";
        const QString update =
            "An Update is available! You have version '1.0.0 (1)' but the newest version is " + newest +
            ". Please use our 'Fettle' to update to the newest version - it can also update your other apps!";
        if (newest == "failed") {
            QCOMPARE(texts, (QStringList{"Update Check Failed", failure, "OK"}));
        } else if (newest == "none") {
            QCOMPARE(texts, (QStringList{"No Update Available", "This app is fully up-to-date.", "Cool"}));
        } else {
            QCOMPARE(texts, (QStringList{"Update Available", update, "Open Fettle Homepage", "Cancel"}));
            QCOMPARE(home.desktop.opened, {QUrl("https://ravelin.example/fettle/")});
        }
        home.desktop.opened.clear();
        home.presenter.answer.response = RecordingPresenter::kNobody;
        checkForUpdates(fetcher);
        QCOMPARE(home.desktop.opened, {});
    }

    void oneAtATime() {
        TestHome home;
        int fetched = 0;
        Fetcher fetcher;
        fetcher = [&](const QUrl& url) {
            if (++fetched == 1) checkForUpdates(fetcher);
            return download::Page{url, {}, fetched == 2};
        };
        home.presenter.whileShown = [&] { checkForUpdates(fetcher); };
        checkForUpdates(fetcher);
        QCOMPARE(fetched, 1);
        QCOMPARE(home.presenter.shown.size(), 1);
        checkForUpdates(fetcher);
        QCOMPARE(fetched, 2);
        QCOMPARE(home.presenter.shown.size(), 1);  // The application quits.
    }
};

QTEST_GUILESS_MAIN(FeedbackTest)
#include "tst_Feedback.moc"
