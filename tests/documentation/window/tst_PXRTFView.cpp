#include "documentation/window/PXRTFView.h"
#include "fakes/Logged.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"

#include <QtWidgets>

class PXRTFViewTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestHome> m_home;
    std::unique_ptr<PXRTFView> m_view;
    QList<QUrl> m_asked;
    std::function<void(const QString&)> m_done;

    /// Shows the view with these properties set as by an interface file.
    void show(const QString& name, const QString& address = {}) {
        m_view->setProperty("localRTFName", name);
        m_view->setProperty("remoteHTMLURL", address);
        m_view->setDownloader([this](const QUrl& url, std::function<void(const QString&)> done) {
            m_asked.append(url);
            m_done = std::move(done);
        });
        QVERIFY(m_view->toPlainText().isEmpty());
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }

private Q_SLOTS:
    void init() {
        m_home.reset();
        m_home = std::make_unique<TestHome>();
        qputenv("RAVELIN_RESOURCES", m_home->path("resources").toUtf8());
        m_home->write("resources/documents/notes.rtf",
                      "{\\rtf1\\b Notes\\b0\\par {\\field{\\*\\fldinst HYPERLINK "
                      "\"https://e.example/a\"}{\\fldrslt here}}}");
        m_view = std::make_unique<PXRTFView>();
        m_asked.clear();
        m_done = {};
    }

    void shownOnce() {
        show("notes");
        QCOMPARE(m_view->toPlainText(), "Notes\nhere");
        m_home->write("resources/documents/notes.rtf", "{\\rtf1 Other}");
        m_view->hide();
        m_view->show();
        QCOMPARE(m_view->toPlainText(), "Notes\nhere");
        QVERIFY(m_asked.isEmpty() && logged(kLogError).isEmpty());
    }

    void missing() {
        m_home->write("resources/documents/no rich text.rtf", "plain");
        for (const char* name : {"missing.rtf", "no rich text.rtf"}) {
            m_view = std::make_unique<PXRTFView>();
            show(name);
            QVERIFY(logged(kLogError).join(' ').contains(name));
            QVERIFY(m_view->toPlainText().contains(name));
        }
    }

    void newerCopy() {
        show("notes.rtf", "https://e.example/$(CFBundleIdentifier)/new.html");
        QCOMPARE(m_asked,
                 QList{QUrl("https://e.example/" + ApplicationInfo::bundleIdentifier() + "/new.html")});
        m_done("<html><body><p> </p></body></html>");
        QCOMPARE(m_view->toPlainText(), "Notes\nhere");
        m_done("<p>Newer</p>");
        QCOMPARE(m_view->toPlainText(), "Newer");
        m_view.reset();
        m_done("<p>Too late</p>");
    }

    void links_data() {
        // What is opened from the documents folder: its name only.
        addRows<QString, bool, QString>({{"page", "https://e.example/a", false, "https://e.example/a"},
                                         {"file beside", "more.pdf", false, "more.pdf"},
                                         {"script", "javascript:x", false, ""},
                                         {"place in the document", "#a", false, ""},
                                         {"beside a page", "b.html", true, "https://e.example/b.html"},
                                         {"this machine's file", "file:///etc/passwd", true, ""}});
    }
    void links() {
        auto [link, fromElsewhere, opened] = row<QString, bool, QString>();
        show("notes", "https://e.example/index.html");
        if (fromElsewhere) m_done("<p>Newer</p>");
        const QString before = m_view->toPlainText();
        Q_EMIT m_view->anchorClicked(QUrl(link));
        if (opened == u"more.pdf")
            opened = QUrl::fromLocalFile(m_home->path("resources/documents/more.pdf")).toString();
        QCOMPARE(m_home->desktop.opened, opened.isEmpty() ? QList<QUrl>() : QList{QUrl(opened)});
        QCOMPARE(m_view->toPlainText(), before);
    }

    void linksFollowTheAppearance() {
        show("notes");
        QPalette palette = m_view->palette();
        palette.setColor(QPalette::Link, QColor(1, 2, 3));
        m_view->setPalette(palette);
        QVERIFY(m_view->toHtml().contains("color:#010203"));
    }

    void linkByKeyboard() {
        show("notes");
        m_view->setFocus();
        QTest::keyClick(m_view.get(), Qt::Key_Tab);
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_home->desktop.opened, QList{QUrl("https://e.example/a")});
    }

    void noExternalResources() {
        QImage picture(8, 8, QImage::Format_RGB32);
        const QString outside = m_home->path("outside.png");
        QVERIFY(picture.save(outside) && picture.save(m_home->path("resources/documents/inside.png")));
        QVERIFY(QFile::link(outside, m_home->path("resources/documents/link.png")));
        show("notes");
        const auto widthOf = [this](const QUrl& url) {
            return m_view->document()->resource(QTextDocument::ImageResource, url).value<QPixmap>().width();
        };
        QCOMPARE(widthOf(QUrl("inside.png")), 8);
        for (const QUrl& url : {QUrl::fromLocalFile(outside), QUrl(outside), QUrl("link.png"),
                                QUrl("../../outside.png"), QUrl("https://e.example/a.png")})
            QCOMPARE(widthOf(url), 1);
    }
};

QTEST_MAIN(PXRTFViewTest)
#include "tst_PXRTFView.moc"
