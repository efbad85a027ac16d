#include "fakes/TestHome.h"
#include "feedback/PXApplicationDelegate.h"
#include "feedback/PXRatingWindowController.h"
#include "ui/help/QuietMoment.h"
#include "ui/help/RatingWindow.h"

#include <QSignalSpy>
#include <QtWidgets>

namespace {

/// The window of a controller whose actions are recorded.
class Asked : public TestHome {
public:
    explicit Asked(const QString& page = "AlternativetoProductPage")
        : controller([page](const char* key) { return key == page ? "page" : QString(); },
                     {.openURL = [this](int choice) { done.append(QString::number(choice)); },
                      .sendSupportRequestMail = [this](const QString& text) { done.append(text); }}) {
        controller.setCloseBlock([this] { done.append("closed"); });
        window = new RatingWindow(controller);
        window->show();
    }
    ~Asked() { delete window; }

    template <typename Widget = QWidget>
    Widget* find(const char* name) const {
        return window->findChild<Widget*>(name);
    }
    void click(const char* name) const { QTest::mouseClick(find(name), Qt::LeftButton); }

    QStringList done;
    PXRatingWindowController controller;
    QPointer<RatingWindow> window;
};

}  // namespace

class RatingWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void happy() {
        const Asked asked;
        QVERIFY(asked.find("initialView")->isVisible());
        QCOMPARE(asked.find("happyButton")->font().pointSize(), 18);
        QCOMPARE(asked.find("sorryText")->font().pointSize(), 14);
        asked.click("happyButton");
        QVERIFY(asked.find("happyView")->isVisible() && !asked.find("initialView")->isVisible());
        QCOMPARE(asked.find<QAbstractButton>("rateappstoreButton")->text(), "    Rate on AlternativeTo");
        QVERIFY(!asked.find("ratemacupdateButton")->isEnabled());
        asked.click("ratemacupdateButton");
        asked.click("rateappstoreButton");
        QCOMPARE(asked.done, QStringList({"5", "closed"}));
        QTRY_VERIFY(!asked.window);
    }

    void happyForAnotherPage() {
        const Asked asked("MacupdateProductPage");
        asked.click("happyButton");
        asked.click("ratemacupdateButton");
        QCOMPARE(asked.done, QStringList({"6", "closed"}));
    }

    void angryByKeyboard() {
        const Asked asked;
        QTest::keyClick(asked.find("problemButton"), Qt::Key_Space);
        QVERIFY(asked.find("angryView")->isVisible());
        QVERIFY(asked.find("feedbackButton")->isEnabled());  // Some users write in the mail itself.
        QTest::keyClicks(asked.find("feedbackTextField"), "No sound");
        QTest::keyClick(asked.find("feedbackTextField"), Qt::Key_Tab);
        QTest::keyClick(asked.find("feedbackButton"), Qt::Key_Space);
        QCOMPARE(asked.done, QStringList({"No sound", "closed"}));
    }

    void closing() {
        for (const char* button : {"notsureButton", "closeButton", "dontshowButton", ""}) {
            const Asked asked;
            *button ? asked.click(button) : QTest::keyClick(asked.window, Qt::Key_Escape);
            QCOMPARE(asked.done, QStringList{"closed"});
            QCOMPARE(asked.presenter.shown.size(), button == QByteArray("dontshowButton") ? 1 : 0);
            QTRY_VERIFY(!asked.window);
        }
    }

    /// A user who types, drags or answers a dialog is not disturbed.
    void waitsForAQuietMoment() {
        const TestHome home;
        QWidget main;
        QLineEdit field(&main);
        QDialog dialog(&main);
        constexpr int kQuiet = 80;  // ms
        constexpr int kKeys = 6;
        QuietMoment moment(&main, kQuiet);
        int keys = 0;
        bool isShown = false;
        moment.wait([&] {
            isShown = true;
            QVERIFY(main.isVisible() && !dialog.isVisible());
            QCOMPARE(keys, kKeys);
        });
        // Timers that are due at the same time, as on a busy machine, fire in the order of their deadlines.
        QTimer typist;
        QTimer::singleShot(2 * kQuiet, &main, [&] {
            main.show();
            typist.start(kQuiet * 3 / 4);
        });
        connect(&typist, &QTimer::timeout, [&] {
            QTest::keyClick(&field, Qt::Key_A);
            if (++keys < kKeys) return;
            typist.stop();
            dialog.open();
            QTimer::singleShot(3 * kQuiet, &dialog, &QDialog::close);
        });
        QTRY_VERIFY_WITH_TIMEOUT(isShown, 60000);
        QVERIFY(!moment.isWaiting());
    }
};

QTEST_MAIN(RatingWindowTest)
#include "tst_RatingWindow.moc"
