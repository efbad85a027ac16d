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

/// The delegate at a time that the test sets.
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

Q_DECLARE_METATYPE(rating::History)

class RatingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void due_data() {
        QTest::addColumn<rating::History>("history");
        QTest::addColumn<bool>("expected");
        const auto ago = [](qint64 seconds) { return kNow.addSecs(-seconds); };
        constexpr qint64 kPause = 98LL * 24 * 60 * 60;
        QTest::newRow("too few") << rating::History{19, false, false, {}} << false;
        QTest::newRow("enough") << rating::History{20, false, false, {}} << true;
        QTest::newRow("asked by this version") << rating::History{500, true, false, ago(2 * kPause)} << false;
        QTest::newRow("turned off") << rating::History{500, false, true, {}} << false;
        QTest::newRow("98 days ago") << rating::History{20, false, false, ago(kPause)} << false;
        QTest::newRow("a little more") << rating::History{20, false, false, ago(kPause).addMSecs(-1)} << true;
        QTest::newRow("a clock set back") << rating::History{20, false, false, ago(-kPause)} << false;
    }
    void due() {
        QFETCH(const rating::History, history);
        QTEST(rating::isDue(history, 20, kNow), "expected");
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
        // The next version starts to count anew.
        setDefaultInt("quillonlib_" + ApplicationInfo::version() + "_asked", 0);
        app.now = kNow.addDays(98);
        app.use(1);
        QCOMPARE(app.requests, 1);
        app.now = kNow.addDays(98).addSecs(1);
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
        // Not by itself: the version may still ask.
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

    void minimumBelowOneIsNeverRateable() {
        QVERIFY(!rating::isRateable(1000, 0));
        QVERIFY(rating::isRateable(2, 1));
    }

    void reviewButtons_data() {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("store");
        QTest::addColumn<QString>("other");
        QTest::newRow("both of their own")
            << QStringList{"StoreProductPage", "MacupdateProductPage", "AlternativetoProductPage"}
            << "icon-appstore||1"
            << "icon-macupdate||1";
        QTest::newRow("the others") << QStringList{"AlternativetoProductPage", "FilehorseProductPage"}
                                    << "icon-alternativeto|    Rate on AlternativeTo|1"
                                    << "icon-filehorse|    Rate on FileHorse|1";
        QTest::newRow("none") << QStringList{} << "icon-appstore||0"
                              << "icon-macupdate||0";
    }
    void reviewButtons() {
        QFETCH(const QStringList, keys);
        const PXRatingWindowController controller(pages(keys), {});
        const auto described = [](const PXRatingWindowController::ReviewButton& button) {
            return QStringList{button.icon, button.title, QString::number(button.isEnabled)}.join(u'|');
        };
        QTEST(described(controller.appStoreButton()), "store");
        QTEST(described(controller.macUpdateButton()), "other");
    }

    void actions() {
        QStringList done;
        PXRatingWindowController controller(
            pages({}), {.openURL = [&](int choice) { done.append(QString::number(choice)); },
                        .sendSupportRequestMail = [&](const QString& text) { done.append(text); }});
        connect(&controller, &PXRatingWindowController::closeRequested, [&] { done.append("close"); });
        controller.rateappstoreClicked();
        controller.ratemacupdateClicked();
        controller.sendfeedbackClicked("No sound & no picture");
        QCOMPARE(done, QStringList({"5", "close", "6", "close", "No sound & no picture", "close"}));
    }

    void neverAgainNeedsTheSecondButton() {
        TestHome home;
        PXRatingWindowController controller(pages({}), {});
        QSignalSpy closed(&controller, &PXRatingWindowController::closeRequested);
        home.presenter.whileShown = [&] { QCOMPARE(closed.count(), 1); };
        controller.dontshowClicked();
        QCOMPARE(defaultInt("quillonlib_dontaskagain"), 0);
        setAlertPresenter(nullptr);
        controller.dontshowClicked();
        QCOMPARE(defaultInt("quillonlib_dontaskagain"), 0);
        setAlertPresenter(&home.presenter);
        closed.clear();
        home.presenter.answer.response = kAlertSecondButton;
        controller.dontshowClicked();
        QCOMPARE(defaultInt("quillonlib_dontaskagain"), 1);
        const Alert& alert = home.presenter.shown.last();
        QCOMPARE(alert.title, "Confirmation");
        QVERIFY(alert.message.startsWith("Ravelin asks for your feedback only rarely"));
        QCOMPARE(alert.buttons[1].title, "Turn off feedback dialog");
    }
};

QTEST_GUILESS_MAIN(RatingTest)
#include "tst_Rating.moc"
