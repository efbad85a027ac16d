#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/alerts/Alert.h"
#include "support/alerts/DontWarnAgain.h"
#include "ui/dialogs/AlertControls.h"
#include "ui/dialogs/AlertDialog.h"
#include "ui/dialogs/AlertPanel.h"
#include "ui/dialogs/DialogPanels.h"
#include "ui/dialogs/DialogPresenter.h"

#include <QtWidgets>

using Act = std::function<void(QDialog&)>;

/// Calls `act` for the dialog that becomes the active modal one within the deadline, and closes the dialog if
/// `act` did not answer it.
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
        if (!QTest::qWaitFor([&] { return !dialog || !dialog->isVisible(); }, 60000)) {
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

static Act pressButton(const QString& title) {
    return [=](QDialog& dialog) { clickOn(button(dialog, title)); };
}

static Act press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    return [=](QDialog& dialog) { QTest::keyClick(dialog.windowHandle(), key, modifiers); };
}

/// The panel that is open over `window`, with its name field ready.
static QFileDialog* openPanel(const QWidget& window) {
    const auto dialogs = window.findChildren<QFileDialog*>();
    const auto found = std::ranges::find_if(dialogs, &QWidget::isVisible);
    if (found == dialogs.end() || !QTest::qWaitForWindowExposed(*found)) qFatal("no panel");
    return *found;
}

static void type(const QFileDialog* dialog, const QString& name, Qt::Key answer = Qt::Key_Return) {
    auto* field = dialog->findChild<QLineEdit*>("fileNameEdit");
    if (!name.isEmpty()) QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, name);
    QTest::keyClick(field, answer);
}

class DialogsTest : public QObject {
    Q_OBJECT

public:
    static void initMain() {
        static const QTemporaryDir folder;
        QFile screens(folder.filePath("screens.json"));
        QVERIFY(screens.open(QIODevice::WriteOnly));
        screens.write(R"({"screens": [{"name": "small", "x": 0, "y": 0, "width": 800, "height": 600,
                          "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toUtf8());
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());  // Of panels.
    }

private Q_SLOTS:
    void init() {
        m_home = std::make_unique<TestHome>();
        m_window = std::make_unique<QWidget>();
        m_window->resize(600, 400);
        m_window->show();
        m_presenter.setMainWindow(m_window.get());
        setAlertPresenter(&m_presenter);
        m_panels = std::make_unique<DialogPanels>();
        m_panels->setMainWindow(m_window.get());
        m_answers.clear();
    }

    void files() {
        m_home->write("a.mkv");
        m_home->write("b.mkv");
        m_panels->chooseFiles({"mkv", "m2ts"}, [this](const QStringList& paths) { m_answers += paths; });
        const QPointer<QFileDialog> dialog = openPanel(*m_window);
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QCOMPARE(dialog->nameFilters(),
                 (QStringList{"Movies and subtitles (*.mkv *.[mM][kK][vV] *.m2ts *.[mM]2[tT][sS])",
                              "All files (*)"}));
        // Like a desktop that matches case-sensitively.
        const QStringList patterns = dialog->nameFilters().first().section(u'(', 1).chopped(1).split(u' ');
        const auto isShown = [&](const QString& name) {
            return std::ranges::any_of(patterns, [&](const QString& pattern) {
                return QRegularExpression::fromWildcard(pattern, Qt::CaseSensitive).match(name).hasMatch();
            });
        };
        for (const char* name : {"film.mkv", "Film.Mkv", "FILM.MKV", "Film.M2ts"})
            QVERIFY2(isShown(name), name);
        QVERIFY(!isShown("film.mkv.txt"));
        dialog->setDirectory(m_home->path());
        type(dialog, "\"a.mkv\" \"b.mkv\"");
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_answers, (QStringList{m_home->path("a.mkv"), m_home->path("b.mkv")}));
    }

    void folder() {
        QWidget preferences;
        preferences.show();
        m_panels->setPreferencesWindow(&preferences);
        QVERIFY(QDir(m_home->path()).mkdir("sub"));
        m_panels->chooseFolder(FilePanels::Over::Preferences, m_home->path(), m_answer);
        const QPointer<QFileDialog> dialog = openPanel(preferences);
        type(dialog, "sub");
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_answers, QStringList{m_home->path("sub")});
    }

    void saved_data() {
        addRows<QString, QString, bool>({{"as filled in", "", "Movie.mp4", false},
                                         {"without extension", "new", "new.mp4", false},
                                         {"with it", "new.MP4", "new.MP4", false},
                                         {"a point is no extension", "Dr. Who", "Dr. Who.mp4", false},
                                         {"replaced", "old", "old.mp4", true},
                                         {"replaced, with a point", "Dr. No", "Dr. No.mp4", true}});
    }
    void saved() {
        const auto [typed, name, asksFirst] = row<QString, QString, bool>();
        m_home->write("old.mp4");
        m_home->write("Dr. No.mp4");
        m_panels->saveFile(m_home->path(), "Movie.mp4", "mp4", m_answer);
        // If it would replace a file, No returns to the panel.
        auto replies = QList{QMessageBox::No, QMessageBox::Yes}.first(asksFirst ? 2 : 0);
        QTimer watcher;
        connect(&watcher, &QTimer::timeout, this, [&] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (question && question->isVisible() && !replies.isEmpty())
                QTest::mouseClick(question->button(replies.takeFirst()), Qt::LeftButton);
        });
        watcher.start(1);
        for (int round = asksFirst ? 2 : 1; round > 0; --round) {
            QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()));
            type(openPanel(*m_window), typed);
            QTRY_VERIFY(replies.size() < round);
        }
        QTRY_COMPARE(m_answers, QStringList{m_home->path(name)});
    }

    void cancelled() {
        m_panels->saveFile(m_home->path(), "Movie.mp4", "mp4", m_answer);
        const QPointer<QFileDialog> dialog = openPanel(*m_window);
        type(dialog, "new", Qt::Key_Escape);
        QTRY_VERIFY(!dialog);
        m_panels->chooseFolder(FilePanels::Over::MainWindow, {}, m_answer);
        m_window.reset();
        m_panels->chooseFolder(FilePanels::Over::MainWindow, {}, m_answer);
        m_panels.reset();  // Closes an open panel, too.
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
        QVERIFY(m_answers.isEmpty());
    }

    void answers_data() {
        addRows<long, Act>({{"Return", 1000L, press(Qt::Key_Return)},
                            {"Esc", 1002L, press(Qt::Key_Escape)},
                            {"key equivalent", 1001L, press(Qt::Key_D, Qt::ControlModifier)},
                            {"third button", 1002L, pressButton("Cancel")},
                            {"'&' is a letter", 1000L, pressButton("Save && Quit")},
                            {"closed by the window manager", 1002L, [](QDialog& d) { d.close(); }},
                            {"nested", 1000L,
                             [](QDialog& outer) {
                                 onNextModal(press(Qt::Key_Escape));
                                 QCOMPARE(alert("Inner", "", "1", "2"), 1001L);
                                 QVERIFY(outer.isVisible());
                                 QTest::keyClick(outer.windowHandle(), Qt::Key_Return);
                             }},
                            {"window destroyed", 1002L, [this](QDialog&) { m_window.reset(); }}});
    }
    void answers() {
        const auto [response, act] = row<long, Act>();
        onNextModal(act);
        QCOMPARE(alert("Title", "Save a & b?", "Save & Quit", {"Don't Save", "Ctrl+D"}, "Cancel"), response);
    }

    void theFirstButtonMayCancel() {
        Alert question;
        question.buttons = {AlertButton::cancelling("Cancel"), "For Good"};
        for (const auto& [response, act] : {std::pair(1000L, press(Qt::Key_Escape)),
                                            {1000L, pressButton("Cancel")},
                                            {1001L, pressButton("For Good")}}) {
            onNextModal(act);
            QCOMPARE(alert("Title", "Sure?", question.buttons[0], question.buttons[1]), response);
            long answered = 0;
            onNextModal(act);
            m_presenter.presentSheet(question, [&](const AlertAnswer& given) { answered = given.response; });
            QTRY_COMPARE(answered, response);
        }
    }

    void returnMayCancel() {
        for (const auto& [response, act] : {std::pair(1001L, press(Qt::Key_Return)),
                                            {1001L, press(Qt::Key_Enter)},
                                            {1001L, press(Qt::Key_Escape)},
                                            {1000L, pressButton("Quit")}}) {
            onNextModal(act);
            QCOMPARE(alert("Title", "Sure?", "Quit", AlertButton::cancellingByDefault("Cancel")), response);
        }
    }

    void overTheWindowThatAsked_data() { addRows<bool>({{"shown", true}, {"closed meanwhile", false}}); }
    /// While the panel closes in which something was chosen, no window is active, or another one.
    void overTheWindowThatAsked() {
        const auto [isShown] = row<bool>();
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

    void withoutAWindow() {
        for (const bool isClosed : {true, false}) {
            isClosed ? void(m_window->close()) : m_window.reset();
            onNextModal([](QDialog& dialog) {
                const QPoint off = dialog.geometry().center() - dialog.screen()->geometry().center();
                QVERIFY(off.manhattanLength() <= 16);  // Except for the frame.
                press(Qt::Key_Return)(dialog);
            });
            QString text;
            QCOMPARE(alert_input("Name?", {}, text), 1000L);  // The only button with the platform's text.
            bool isAnswered = false;
            m_presenter.presentSheet({}, [&](const AlertAnswer&) { isAnswered = true; });
            press(Qt::Key_Return)(*qobject_cast<QDialog*>(QApplication::activeModalWidget()));
            QVERIFY(isAnswered);
        }
    }

    void controls_data() {
        const auto type = [](const char* text) {  // Into what has the focus, without a click.
            return [=](QDialog& d) { QTest::keyClicks(d.focusWidget(), text); };
        };
        using C = AlertControl;
        addRows<AlertControl, QVariant, QVariant, Act>(
            {{"input", C::Input, QVariant(), "a & b", type("a & b")},
             {"secure", C::SecureInput, "old", "secret",
              [=](QDialog& d) {
                  QCOMPARE(d.findChild<QLineEdit*>()->echoMode(), QLineEdit::Password);
                  type("secret")(d);  // What was there is selected.
              }},
             {"box on", C::CheckBox, false, true,
              [](QDialog& d) {
                  QCOMPARE(d.findChild<QCheckBox*>()->text(), "R && D");
                  clickOn(d.findChild<QCheckBox*>());
              }},
             {"colour", C::ColorWell, "#80112233", "#80112233", [](QDialog&) {}},
             {"colour chosen", C::ColorWell, "#102030", "#445566",
              [](QDialog& d) {
                  const QImage shown = d.findChild<QToolButton*>()->grab().toImage();
                  QCOMPARE(shown.pixelColor(shown.rect().center()), QColor("#102030"));
                  onNextModal([](QDialog& panel) {
                      qobject_cast<QColorDialog*>(&panel)->setCurrentColor("#445566");
                      QTest::keyClick(panel.windowHandle(), Qt::Key_Return);
                  });
                  clickOn(d.findChild<QToolButton*>());
                  QTRY_COMPARE(QApplication::activeModalWidget(), &d);
              }},
             {"lines", C::InputText, "a\u00A0b\n", "a\u00A0b\n\nc",
              [=](QDialog& d) {
                  QTest::keyClick(d.focusWidget(), Qt::Key_End, Qt::ControlModifier);
                  QTest::keyClick(d.focusWidget(), Qt::Key_Return);  // A line, not the button.
                  type("c")(d);
              }},
             {"output", C::OutputText, "text", "text",
              [](QDialog& d) { QTest::keyClicks(d.findChild<QPlainTextEdit*>(), "x"); }},
             {"pop-up", C::SelectionPopup, 0, 1,
              [](QDialog& d) { QTest::keyClick(d.focusWidget(), Qt::Key_Down); }},
             {"matrix", C::SelectionMatrix, 0, 2,
              [](QDialog& d) { clickOn(d.findChildren<QRadioButton*>().at(2)); }}});
    }
    void controls() {
        const auto [control, before, after, act] = row<AlertControl, QVariant, QVariant, Act>();
        onNextModal([=](QDialog& dialog) {
            act(dialog);
            pressButton("Done")(dialog);
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
        QCOMPARE(answer.value, after);
    }

    void sizesOfControls() {
        const auto sizeOf = [](AlertControl control, int items = 3) {
            Alert alert;
            alert.control = control;
            alert.items = QStringList(items, "item");
            QWidget parent;
            return makeAlertAccessory(alert, 300, &parent).widget->size();
        };
        using enum AlertControl;
        for (const AlertControl line : {Input, SecureInput, ColorWell, SelectionPopup})
            QVERIFY(sizeOf(line).width() == 310 && sizeOf(line).height() >= 24);
        QCOMPARE(sizeOf(InputText), QSize(310, 200));
        QCOMPARE(sizeOf(SelectionMatrix, 40), QSize(269, 240));
        QVERIFY(sizeOf(SelectionMatrix).height() < 240);
    }

    void tabsInTheOrderThatIsRead() {
        QStringList walked;
        onNextModal([&](QDialog& dialog) {
            for (int i = 0; i < 5; ++i) {
                walked.append(dialog.focusWidget()->metaObject()->className());
                QTest::keyClick(dialog.windowHandle(), Qt::Key_Tab);
            }
            press(Qt::Key_Escape)(dialog);
        });
        Alert shown;
        shown.message = QString("word ").repeated(2000);  // Scrolled by keys, too.
        shown.buttons = {"Done", "Cancel"};
        shown.control = AlertControl::Input;
        shown.suppressionTitle = "Don't ask again";
        m_presenter.present(shown);
        QCOMPARE(walked, QStringList({"QLineEdit", "QCheckBox", "QPushButton", "QPushButton", "AlertText"}));
    }

    void silenced() {
        for (const bool isTicked : {false, true}) {
            onNextModal([=](QDialog& dialog) {
                if (isTicked) clickOn(dialog.findChild<QCheckBox*>());
                press(Qt::Key_Return)(dialog);
            });
            alert_dontwarnagain_version("id", "Title", "Message", "OK", "Don't ask & forget");
        }
        QCOMPARE(defaultInt("_id_1.0.0_asked"), 1);
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
        addRows<QString, QStringList>(
            {{"plain", "", {"closed", "called"}}, {"box", "Show & tell", {"called, ticked", "closed"}}});
    }
    void panel() {
        const auto [box, expected] = row<QString, QStringList>();
        QStringList happened;
        const auto called = [&](bool isTicked) { happened += isTicked ? "called, ticked" : "called"; };
        m_presenter.presentNonModal({"Title", "Message", "OK", "", box, called});
        QTRY_VERIFY(qobject_cast<AlertPanel*>(QApplication::activeWindow()));
        const QPointer<QWidget> shown = QApplication::activeWindow();
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(shown->width(), 420);
        if (!box.isEmpty()) clickOn(shown->findChild<QCheckBox*>());
        connect(qobject_cast<QDialog*>(shown), &QDialog::finished, this, [&] { happened += "closed"; });
        QTest::keyClick(shown->windowHandle(), Qt::Key_Return);
        QTRY_VERIFY(!shown);
        QCOMPARE(happened, expected);
    }

    void heightOfAPanel() {
        QFont font = QApplication::font();
        font.setPointSize(11);
        const int line = AlertPanel::heightFor("1\n2\n3\n4", font) - AlertPanel::heightFor("1\n2\n3", font);
        QVERIFY(line >= 11);
        QCOMPARE(AlertPanel::heightFor("", font), 130);
        QVERIFY(qAbs(AlertPanel::heightFor(QString(19, '\n') + "x", font) - (100 + 20 * line)) <= 20);
        // A path contains no blanks, and must not be wider than the text.
        QVERIFY(AlertPanel::heightFor(QString(400, 'w'), font) > 130 + 4 * line);
    }

    void staysOnTheScreen() {
        QCOMPARE(m_window->screen()->size(), QSize(800, 600));
        const QString message = QString("many words and a/path ").repeated(460).left(10'000);
        onNextModal([](QDialog& dialog) {
            QVERIFY(dialog.screen()->geometry().contains(dialog.frameGeometry()));
            QVERIFY(std::ranges::any_of(dialog.findChildren<QScrollBar*>(), [](const QScrollBar* bar) {
                return bar->isVisible() && bar->maximum() > 0 && bar->value() == 0;
            }));
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
    std::unique_ptr<DialogPanels> m_panels;
    QStringList m_answers;
    const std::function<void(const QString&)> m_answer = [this](const QString& path) { m_answers += path; };
};

QTEST_MAIN(DialogsTest)
#include "tst_Dialogs.moc"
