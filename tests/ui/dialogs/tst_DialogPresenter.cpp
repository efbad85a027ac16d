#include "fakes/TestHome.h"
#include "support/alerts/Alert.h"
#include "support/alerts/DontWarnAgain.h"
#include "ui/dialogs/AlertDialog.h"
#include "ui/dialogs/AlertPanel.h"
#include "ui/dialogs/DialogPresenter.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using Act = std::function<void(QDialog&)>;

/// Does `act` on the dialog that becomes the active modal one within the deadline, and closes it when `act`
/// did not answer it.
static void onNextModal(const Act& act) {
    auto* timer = new QTimer(qApp);
    timer->setInterval(1);
    const QPointer<QWidget> before = QApplication::activeModalWidget();
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        const QPointer<QDialog> dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || dialog == before || !QTest::qWaitForWindowActive(dialog)) return;
        timer->stop();
        timer->deleteLater();
        act(*dialog);
        if (!QTest::qWaitFor([&] { return !dialog || !dialog->isVisible(); }, 2000)) {
            QTest::qFail("the dialog is still open", __FILE__, __LINE__);
            dialog->reject();
        }
    });
    timer->start();
}

static QPushButton* button(const QWidget& dialog, const QString& title) {
    for (QPushButton* candidate : dialog.findChildren<QPushButton*>()) {
        if (candidate->text() == title) return candidate;
    }
    return nullptr;
}

static void clickOn(QWidget* widget) {
    QVERIFY(widget && widget->isVisible());
    QTest::mouseClick(widget, Qt::LeftButton, {}, {8, widget->height() / 2});
}

static Act press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    return [=](QDialog& dialog) { QTest::keyClick(dialog.windowHandle(), key, modifiers); };
}

class DialogPresenterTest : public QObject {
    Q_OBJECT

public:
    static void initMain() {
        static const QTemporaryDir folder;
        QFile screens(folder.filePath("screens.json"));
        QVERIFY(screens.open(QIODevice::WriteOnly));
        screens.write(R"({"screens": [{"name": "small", "x": 0, "y": 0, "width": 800, "height": 600,
                          "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toUtf8());
    }

private Q_SLOTS:
    void init() {
        m_home = std::make_unique<TestHome>();
        m_window = std::make_unique<QWidget>();
        m_window->resize(600, 400);
        m_window->show();
        m_presenter.setMainWindow(m_window.get());
        setAlertPresenter(&m_presenter);
    }

    void answers_data() {
        QTest::addColumn<Act>("act");
        QTest::addColumn<long>("response");
        QTest::newRow("Return") << press(Qt::Key_Return) << 1000L;
        QTest::newRow("Esc") << press(Qt::Key_Escape) << 1002L;
        QTest::newRow("key equivalent") << press(Qt::Key_D, Qt::ControlModifier) << 1001L;
        QTest::newRow("third button") << Act([](QDialog& d) { clickOn(button(d, "Cancel")); }) << 1002L;
        QTest::newRow("'&' is a letter") << Act([](QDialog& d) {
            QVERIFY(button(d, "Save && Quit")->shortcut().isEmpty());
            clickOn(button(d, "Save && Quit"));
        }) << 1000L;
        QTest::newRow("closed by the window manager") << Act([](QDialog& d) { d.close(); }) << 1002L;
        QTest::newRow("nested") << Act([](QDialog& outer) {
            onNextModal(press(Qt::Key_Escape));
            QCOMPARE(alert("Inner", "", "1", "2"), 1001L);
            QVERIFY(outer.isVisible());
            QTest::keyClick(outer.windowHandle(), Qt::Key_Return);
        }) << 1000L;
        QTest::newRow("window destroyed") << Act([this](QDialog&) { m_window.reset(); }) << 1002L;
    }
    void answers() {
        QFETCH(Act, act);
        onNextModal(act);
        QTEST(alert("Title", "Save a & b?", "Save & Quit", {"Don't Save", "Ctrl+D"}, "Cancel"), "response");
    }

    void theFirstButtonMayCancel_data() {
        QTest::addColumn<Act>("act");
        QTest::addColumn<long>("response");
        QTest::newRow("Esc") << press(Qt::Key_Escape) << 1000L;
        QTest::newRow("closed") << Act([](QDialog& d) { d.close(); }) << 1000L;
        QTest::newRow("its button") << Act([](QDialog& d) { clickOn(button(d, "Cancel")); }) << 1000L;
        QTest::newRow("the other") << Act([](QDialog& d) { clickOn(button(d, "For Good")); }) << 1001L;
    }
    void theFirstButtonMayCancel() {
        QFETCH(Act, act);
        QFETCH(long, response);
        Alert question;
        question.buttons = {AlertButton::cancelling("Cancel"), "For Good"};
        onNextModal(act);
        QCOMPARE(alert("Title", "Sure?", question.buttons[0], question.buttons[1]), response);
        long answered = 0;
        onNextModal(act);
        m_presenter.presentSheet(question, [&](const AlertAnswer& answer) { answered = answer.response; });
        QTRY_COMPARE(answered, response);
    }

    void overTheWindowThatAsked_data() {
        QTest::addColumn<bool>("isShown");
        QTest::newRow("shown") << true;
        QTest::newRow("closed meanwhile") << false;
    }
    /// While the panel closes in which something was chosen, no window is active, or another one.
    void overTheWindowThatAsked() {
        QFETCH(const bool, isShown);
        QWidget preferences;
        preferences.setVisible(isShown);
        m_presenter.setPreferencesWindow(&preferences);
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        const QWidget* over = nullptr;
        const Act look = [&](QDialog& dialog) {
            over = dialog.parentWidget();
            dialog.close();
        };
        onNextModal(look);
        alert_apptitled_over(AlertWindow::Preferences, "Known", "D'oh");
        QCOMPARE(over, isShown ? &preferences : m_window.get());
        preferences.show();
        preferences.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&preferences));
        onNextModal(look);
        alert_apptitled_over(AlertWindow::Main, "Known", "D'oh");
        QCOMPARE(over, m_window.get());
    }

    void withoutAWindow_data() {
        QTest::addColumn<bool>("hasWindow");
        QTest::newRow("none yet") << false;
        QTest::newRow("closed") << true;
    }
    void withoutAWindow() {
        QFETCH(bool, hasWindow);
        m_window->close();
        if (!hasWindow) m_window.reset();
        onNextModal([](QDialog& dialog) {
            const QPoint off = dialog.geometry().center() - dialog.screen()->geometry().center();
            QVERIFY(off.manhattanLength() <= 16);  // But for the frame.
            QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
        });
        QString text;
        QCOMPARE(alert_input("Name?", {}, text), 1000L);  // The single button that is the platform's.
        bool isAnswered = false;
        m_presenter.presentSheet({}, [&](const AlertAnswer&) { isAnswered = true; });
        press(Qt::Key_Return)(*qobject_cast<QDialog*>(QApplication::activeModalWidget()));
        QVERIFY(isAnswered);
    }

    void controls_data() {
        QTest::addColumn<AlertControl>("control");
        QTest::addColumn<QVariant>("before");
        QTest::addColumn<Act>("act");
        QTest::addColumn<QVariant>("after");
        const auto type = [](const char* text) {  // Into what has the focus, without a click.
            return [=](QDialog& d) { QTest::keyClicks(d.focusWidget(), text); };
        };
        const auto nothing = [](QDialog&) {};
        using C = AlertControl;
        QTest::newRow("input") << C::Input << QVariant() << Act(type("a & b")) << QVariant("a & b");
        QTest::newRow("secure") << C::SecureInput << QVariant("old") << Act([=](QDialog& d) {
            QCOMPARE(d.findChild<QLineEdit*>()->echoMode(), QLineEdit::Password);
            type("secret")(d);  // What was there is selected.
        }) << QVariant("secret");
        QTest::newRow("box on") << C::CheckBox << QVariant(false) << Act([](QDialog& d) {
            QCOMPARE(d.findChild<QCheckBox*>()->text(), "R && D");
            clickOn(d.findChild<QCheckBox*>());
        }) << QVariant(true);
        QTest::newRow("colour") << C::ColorWell << QVariant("#80112233") << Act(nothing)
                                << QVariant("#80112233");
        QTest::newRow("colour chosen") << C::ColorWell << QVariant("#102030") << Act([](QDialog& d) {
            const QImage shown = d.findChild<QToolButton*>()->grab().toImage();
            QCOMPARE(shown.pixelColor(shown.rect().center()), QColor("#102030"));
            onNextModal([](QDialog& panel) {
                qobject_cast<QColorDialog*>(&panel)->setCurrentColor("#445566");
                QTest::keyClick(panel.windowHandle(), Qt::Key_Return);
            });
            clickOn(d.findChild<QToolButton*>());
            QTRY_COMPARE(QApplication::activeModalWidget(), &d);
        }) << QVariant("#445566");
        QTest::newRow("lines") << C::InputText << QVariant(u"a\u00A0b\n"_qs) << Act([=](QDialog& d) {
            QTest::keyClick(d.focusWidget(), Qt::Key_End, Qt::ControlModifier);
            QTest::keyClick(d.focusWidget(), Qt::Key_Return);  // A line, not the button.
            type("c")(d);
        }) << QVariant(u"a\u00A0b\n\nc"_qs);
        QTest::newRow("output") << C::OutputText << QVariant("text") << Act([=](QDialog& d) {
            QTest::keyClicks(d.findChild<QPlainTextEdit*>(), "x");
        }) << QVariant("text");
        QTest::newRow("pop-up") << C::SelectionPopup << QVariant(0)
                                << Act([](QDialog& d) { QTest::keyClick(d.focusWidget(), Qt::Key_Down); })
                                << QVariant(1);
        QTest::newRow("matrix") << C::SelectionMatrix << QVariant(0)
                                << Act([](QDialog& d) { clickOn(d.findChildren<QRadioButton*>().at(2)); })
                                << QVariant(2);
    }
    void controls() {
        QFETCH(AlertControl, control);
        QFETCH(QVariant, before);
        QFETCH(Act, act);
        onNextModal([=](QDialog& dialog) {
            act(dialog);
            clickOn(button(dialog, "Done"));
        });
        Alert shown;
        shown.message = "Which?";
        shown.buttons = {"Done", "Cancel"};
        shown.control = control;
        shown.controlTitle = "R & D";
        shown.items = QStringList{"one", QString(150, 'w'), "three & more"};
        shown.value = before;
        const AlertAnswer answer = m_presenter.present(shown);
        QCOMPARE(answer.response, 1000L);
        QTEST(answer.value, "after");
    }

    void silenced() {
        int asked = 0;
        for (const bool tick : {false, true, true}) {
            if (asked < 2) {
                onNextModal([&asked, tick](QDialog& dialog) {
                    ++asked;
                    if (tick) clickOn(dialog.findChild<QCheckBox*>());
                    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
                });
            }
            alert_dontwarnagain_version("id", "Title", "Message", "OK", "Don't ask & forget");
        }
        QCOMPARE(asked, 2);
    }

    void sheet() {
        Alert question;
        question.buttons = {"Quit", "Cancel"};
        QList<long> responses;
        for (const bool windowGoes : {false, true}) {
            m_presenter.presentSheet(question, [&](const AlertAnswer& a) { responses.append(a.response); });
            const QPointer<AlertDialog> dialog = m_window->findChild<AlertDialog*>();
            QVERIFY(dialog->isVisible());
            QCOMPARE(dialog->windowModality(), Qt::WindowModal);
            QCOMPARE(responses.size(), windowGoes ? 1 : 0);
            windowGoes ? m_window.reset() : press(Qt::Key_Escape)(*dialog);
            QTRY_VERIFY(!dialog);
        }
        QCOMPARE(responses, QList<long>{1001});
    }

    void panel_data() {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QStringList>("happened");
        QTest::newRow("plain") << "" << QStringList{"closed", "called"};
        QTest::newRow("check box") << "Show & tell" << QStringList{"called, ticked", "closed"};
    }
    void panel() {
        QFETCH(QString, box);
        QStringList happened;
        m_presenter.presentNonModal({"Title", "Message", "OK", "", box, [&](bool checked) {
                                         happened.append(checked ? "called, ticked" : "called");
                                     }});
        QTRY_VERIFY(qobject_cast<AlertPanel*>(QApplication::activeWindow()));
        const QPointer<QWidget> shown = QApplication::activeWindow();
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(shown->width(), 420);
        if (!box.isEmpty()) clickOn(shown->findChild<QCheckBox*>());
        connect(qobject_cast<QDialog*>(shown), &QDialog::finished, this, [&] { happened.append("closed"); });
        QTest::keyClick(shown->windowHandle(), Qt::Key_Return);
        QTRY_VERIFY(!shown);
        QTEST(happened, "happened");
    }

    void heightOfAPanel() {
        QFont font = QApplication::font();
        font.setPointSize(11);
        const int line = AlertPanel::heightFor("1\n2\n3\n4", font) - AlertPanel::heightFor("1\n2\n3", font);
        QVERIFY(line >= 11);
        QCOMPARE(AlertPanel::heightFor("", font), 130);
        QVERIFY(qAbs(AlertPanel::heightFor(QString(19, '\n') + "x", font) - (100 + 20 * line)) <= 20);
        // A path has no place to break it, and is no wider than the text.
        QVERIFY(AlertPanel::heightFor(QString(400, 'w'), font) > 130 + 4 * line);
    }

    void staysOnTheScreen() {
        QCOMPARE(m_window->screen()->size(), QSize(800, 600));
        const QString message = QString("many words and a/path ").repeated(460).left(10'000);
        onNextModal([](QDialog& dialog) {
            QVERIFY(dialog.screen()->geometry().contains(dialog.frameGeometry()));
            bool scrolls = false;
            for (const auto* bar : dialog.findChildren<QScrollBar*>())
                scrolls = scrolls || (bar->isVisible() && bar->maximum() > 0 && bar->value() == 0);
            QVERIFY(scrolls);
            QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
        });
        alert_customicon("Title", message, "OK", QString(), QString(), "none such");
        m_presenter.presentNonModal({"Title", message, "OK", "", "", {}});
        QTRY_VERIFY(qobject_cast<AlertPanel*>(QApplication::activeWindow()));
        const QWidget* panel = QApplication::activeWindow();
        QVERIFY(panel->screen()->geometry().contains(panel->frameGeometry()));
    }

private:
    std::unique_ptr<TestHome> m_home;
    std::unique_ptr<QWidget> m_window;
    DialogPresenter m_presenter;
};

QTEST_MAIN(DialogPresenterTest)
#include "tst_DialogPresenter.moc"
