#include "fakes/TestHome.h"
#include "feedback/PXApplicationDelegate.h"
#include "feedback/PXRatingWindowController.h"
#include "feedback/RatingRules.h"
#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/store/Defaults.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>

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

class RatingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void due() {
        constexpr qint64 kPause = 98LL * 24 * 60 * 60;
        const QDateTime pauseAgo = kNow.addSecs(-kPause);
        const auto isDue = [](int usages, bool isAsked, bool isTurnedOff, const QDateTime& lastAsked = {}) {
            return rating::isDue({usages, isAsked, isTurnedOff, lastAsked}, 20, kNow);
        };
        QVERIFY(!isDue(19, false, false));
        QVERIFY(isDue(20, false, false));
        QVERIFY(!isDue(500, true, false, kNow.addSecs(-2 * kPause)));  // By this version.
        QVERIFY(!isDue(500, false, true));
        QVERIFY(!isDue(20, false, false, pauseAgo));
        QVERIFY(isDue(20, false, false, pauseAgo.addMSecs(-1)));
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
};

QTEST_GUILESS_MAIN(RatingTest)
#include "tst_Rating.moc"
