#include "documentation/window/Documentation.h"
#include "documentation/window/FindBar.h"
#include "documentation/window/PXRTFView.h"
#include "fakes/FakeWebEngine.h"
#include "fakes/Table.h"
#include "fakes/WindowedApplication.h"
#include "ui/widgets/WindowMenu.h"

namespace {

constexpr int kPages = 6;

/// The application with a complete documentation.
class DocumentedApplication : public WindowedApplication {
public:
    DocumentedApplication() : documentation(delegate, engine, {QIcon(), addWindowMenu}) {
        for (const DocumentationPage& page : documentation::pages())
            write("resources/documents/" + page.name, "<title>" + page.title.toUtf8() + "</title>");
    }

    DocumentationWindow* docs() const { return documentation.documentationWindow(); }
    QTabWidget& tabs() const { return *docs()->findChild<QTabWidget*>(); }
    bool isLoaded(const QString& page) const {
        return !engine.views.isEmpty() && engine.views.last() && engine.views.last()->page() == page;
    }
    QUrl address(const QString& name) const { return QUrl::fromLocalFile(page(name)); }
    QString page(const QString& name) const { return path("resources/documents/" + name); }
    void openQuickStart() {
        delegate.openDocumentationWindow(0);
        QTRY_VERIFY(isLoaded("quick-start.html"));
    }
    void press(const QString& keys) const {
        const QKeyCombination key = QKeySequence(keys)[0];
        QTest::keyClick(docs(), key.key(), key.keyboardModifiers());
    }

    FakeWebEngine engine;
    Documentation documentation;
};

}  // namespace

class DocumentationWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theMenuOpensItsPage() {
        DocumentedApplication app;
        const QStringList pages = {"quickStartAction",      "audioAndPlayersAction", "subtitlesAction",
                                   "troubleshootingAction", "whatsNewAction",        "licencesAction"};
        for (int i = 0; i < kPages; ++i) {
            auto* action = app.find<QAction>(qPrintable(pages[i]));
            QVERIFY(app.find<QMenu>("helpMenu")->actions().contains(action));
            action->trigger();
            QCOMPARE(app.tabs().count(), kPages);
            QCOMPARE(app.tabs().currentIndex(), i);
            QCOMPARE(action->text().remove('&'), app.tabs().tabText(i));
        }
        QCOMPARE(app.find<QAction>("quickStartAction")->shortcut(), QKeySequence("F1"));
    }

    void tags() {
        DocumentedApplication app;
        app.delegate.openDocumentationWindow(3);
        const DocumentationWindow* window = app.docs();
        // Without a tag or with an invalid one, the page stays.
        for (const std::optional<int> tag : {std::optional<int>(), {-2}, {kPages}, {2}}) {
            app.delegate.openDocumentationWindow(tag);
            QCOMPARE(app.docs(), window);
            QCOMPARE(app.tabs().currentIndex(), tag == 2 ? 2 : 3);
        }
    }

    void onlyWhatIsShownLoads() {
        DocumentedApplication app;
        app.delegate.openDocumentationWindow(2);
        QVERIFY(app.docs()->isVisible() && app.docs()->findChild<QAction*>("showMainWindowAction"));
        QVERIFY(app.engine.views.isEmpty());  // The window is painted first.
        QTRY_VERIFY(app.isLoaded("subtitles.html"));
        QCOMPARE(app.engine.views.size(), 1);
        QVERIFY(app.engine.views[0]->property("openOnlyClicksInBrowser").toBool());
        QCOMPARE(app.engine.views[0]->property("remoteHTMLURL"), documentation::pages()[2].remoteHTMLURL);
        app.press("Ctrl+PgDown");
        QVERIFY(app.isLoaded("troubleshooting.html"));
        app.press("Ctrl+PgUp");
        QCOMPARE(app.engine.views.size(), 2);
        app.delegate.openDocumentationWindow(5);
        QCOMPARE(app.docs()->findChild<PXRTFView*>()->property("localRTFName"), "licences.rtf");
        QCOMPARE(app.engine.views.size(), 2);
    }

    void itIsReleasedWhenItCloses() {
        for (const char* keys : {"Ctrl+W", "Esc"}) {
            DocumentedApplication app;
            app.delegate.openDocumentationWindow(4);
            QTRY_VERIFY(app.isLoaded("whats-new.html"));
            app.press(keys);
            QTRY_VERIFY(!app.docs());
            QVERIFY(!app.engine.views[0]);
            app.delegate.openDocumentationWindow();
            QCOMPARE(app.tabs().currentIndex(), 0);
            QTRY_VERIFY(app.isLoaded("quick-start.html"));
        }
    }

    void linkTargets() {
        DocumentedApplication app;
        app.openQuickStart();
        const auto& leave = app.engine.views[0]->services.openInBrowser;
        QUrl troubles = app.address("troubleshooting.html");
        troubles.setFragment("no-sound");
        leave(troubles);
        QCOMPARE(app.tabs().currentIndex(), 3);
        QVERIFY(app.isLoaded("troubleshooting.html"));
        QCOMPARE(app.engine.views.last()->place, "no-sound");
        // And back to a page that is already loaded.
        leave(app.address("quick-start.html#audio"));
        leave(QUrl("file:///etc/passwd"));
        leave(QUrl("steam://run/1"));
        QVERIFY(app.desktop.opened.isEmpty());
        leave(QUrl("https://foreign.example/"));
        QCOMPARE(app.desktop.opened, QList<QUrl>{QUrl("https://foreign.example/")});
    }

    void finding() {
        DocumentedApplication app;
        app.openQuickStart();
        QVERIFY(QTest::qWaitForWindowActive(app.docs()));
        app.press("Ctrl+F");
        const auto* bar = app.docs()->findChild<FindBar*>();
        auto* field = bar->findChild<QLineEdit*>();
        QTRY_VERIFY(field->hasFocus());
        QTest::keyClicks(field, "here");
        QTest::keyClick(field, Qt::Key_Return);
        QTest::keyClick(field, Qt::Key_Return, Qt::ShiftModifier);
        for (auto* button : bar->findChildren<QToolButton*>(Qt::FindDirectChildrenOnly).first(2)) {
            QVERIFY(!button->geometry().intersects(field->geometry()));
            QTest::mouseClick(button, Qt::LeftButton);
        }
        QCOMPARE(app.engine.views[0]->searches.join(' '), "h he her here here -here -here here");
        QTest::keyClicks(field, "!");
        QCOMPARE(bar->findChild<QLabel*>()->text(), "Not found");
        QTest::keyClick(field, Qt::Key_Escape);
        QVERIFY(!bar->isVisible() && app.docs()->isVisible());
        QCOMPARE(app.engine.views[0]->searches.last(), "");
        app.press("Ctrl++");
        QVERIFY(app.engine.views[0]->magnification > 1);
    }

    void aPageThatCannotBeShown() {
        for (const bool isMissing : {true, false}) {  // Else its process crashes.
            DocumentedApplication app;
            const QString page = app.page("quick-start.html");
            if (isMissing) {
                QVERIFY(QFile::remove(page));
                app.delegate.openDocumentationWindow(0);
            } else {
                app.openQuickStart();
                app.engine.views[0]->services.failed("killed");
            }
            const QLabel* notice = nullptr;
            QTRY_VERIFY((notice = app.docs()->findChild<QLabel*>("sentence")) && notice->isVisible());
            QCOMPARE(notice->text().contains(page), isMissing);
        }
    }

    void withoutAnEngine_data() {
        addRows<bool, bool, bool>({{"not installed", true, true, false},
                                   {"does not load", false, true, false},
                                   {"no browser, too", true, false, false},
                                   {"no page, too", true, true, true}});
    }
    void withoutAnEngine() {
        const auto [isKnownBefore, hasBrowser, isMissing] = row<bool, bool, bool>();
        DocumentedApplication app;
        (isKnownBefore ? app.engine.speaksAgainst : app.engine.failure) = "It is not here.";
        app.desktop.opens = hasBrowser;
        const QString page = app.page("audio-and-players.html");
        if (isMissing) QFile::remove(page);
        if (!isKnownBefore) {
            app.delegate.openDocumentationWindow(5);  // Needs no engine.
            QTRY_VERIFY(app.docs()->findChild<PXRTFView*>());
        }
        app.delegate.openDocumentationWindow(1);
        QTRY_VERIFY(!app.docs());
        QCOMPARE(app.desktop.opened, isMissing ? QList<QUrl>() : QList<QUrl>{QUrl::fromLocalFile(page)});
        const bool isOpened = hasBrowser && !isMissing;
        QCOMPARE(app.find<QStatusBar>("statusBar")->currentMessage(),
                 isOpened ? "The page was opened in your browser." : "");
        QCOMPARE(app.presenter.shown.size(), isOpened ? 0 : 1);
        QVERIFY(isOpened || app.presenter.messages().value(0).contains(page));
    }
};

QTEST_MAIN(DocumentationWindowTest)
#include "tst_DocumentationWindow.moc"
