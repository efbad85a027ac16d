#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "feedback/UpdateCheck.h"

#include <QTest>

class UpdateCheckTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void feeds_data() {
        // A null feed: the download failed; `newest` is the version in the alert, "none" or "failed".
        const Table<QByteArray, QString> table("feed", "newest");
        const auto row = [&](const QByteArray& feed, const char* newest) {
            table(feed.isNull() ? "no page" : feed.constData(), feed, newest);
        };
        row("<a sparkle:shortVersionString=\"1.1\" sparkle:version=\"2\"/>", "'1.1 (2)'");
        row("sparkle:version=\"002\" sparkle:shortVersionString=\"\"", "' (2)'");
        row("sparkle:version=\"2\" sparkle:shortVersionString=\"1.1", "'2 (2)'");
        row("sparkle:version=\"99999999999\"", "'99999999999 (2147483647)'");
        row("sparkle:version=\"1\" sparkle:shortVersionString=\"7.0\" sparkle:version=\"2\"", "none");
        row("sparkle:version=\"0\"", "none");
        row("sparkle:version=\"\"", "none");
        row("sparkle:version=\"1.2.0\" sparkle:version=\"2\"", "failed");
        row("sparkle:version=\"+2\"", "failed");
        row("sparkle:version=\" 2\"", "failed");
        row("sparkle:version=\"٢\"", "failed");
        row("sparkle:version='2' sparkle:Version=\"2\"", "failed");
        row("sparkle:version=\"2", "failed");
        row("\xFF sparkle:version=\"2\"", "failed");
        row("", "failed");
        row({}, "failed");
    }
    void feeds() {
        QFETCH(QByteArray, feed);
        QFETCH(QString, newest);
        TestHome home;
        QList<QUrl> asked;
        const Fetcher fetcher = [&](const QUrl& url) {
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

QTEST_GUILESS_MAIN(UpdateCheckTest)
#include "tst_UpdateCheck.moc"
