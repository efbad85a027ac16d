#include "documentation/window/Documentation.h"
#include "fakes/FakeWebEngine.h"
#include "fakes/Table.h"
#include "fakes/WindowedApplication.h"
#include "feedback/PXRatingWindowController.h"
#include "ui/dialogs/AlertDialog.h"
#include "ui/help/AboutWindow.h"
#include "ui/help/RatingWindow.h"
#include "ui/look/Appearance.h"
#include "ui/preferences/PreferencesWindow.h"
#include "ui/widgets/Mnemonics.h"
#include "ui/widgets/WindowMenu.h"

namespace {

constexpr int kPatience = 60000;  // ms

constexpr const char* kManyStreams = R"(
    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 448 kb/s (default)
    Stream #0:2(ger): Audio: dts (DTS), 48000 Hz, 5.1(side), fltp, 1536 kb/s
    Stream #0:3(eng): Subtitle: hdmv_pgs_subtitle
)";

QString nameOf(const QWidget* widget) {
    if (!widget) return {};
    const auto* button = qobject_cast<const QToolButton*>(widget);
    return button && button->defaultAction() ? button->defaultAction()->objectName() : widget->objectName();
}

/// What Tab leads to, from what has the focus until that has it again.
QList<QWidget*> stops(const QWidget& window, Qt::Key key = Qt::Key_Tab) {
    QList<QWidget*> stops;
    for (QWidget* next = window.focusWidget(); next && !stops.contains(next); next = window.focusWidget()) {
        stops.append(next);
        QTest::keyClick(next, key);
    }
    return stops;
}

QString namesOf(const QList<QWidget*>& widgets) {
    QStringList names;
    for (const QWidget* widget : widgets)
        names.append(nameOf(widget));
    return names.join(' ');
}

/// What Tab should lead to.
QSet<QWidget*> controls(const QWidget& window) {
    QSet<QWidget*> controls;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        const bool isReachable = widget->isVisible() && widget->isEnabled() &&
                                 (widget->focusPolicy() & Qt::TabFocus) != 0 && !widget->focusProxy();
        if (isReachable && widget->window() == &window) controls.insert(widget);
    }
    return controls;
}

/// Whether the widget looks different with the focus.
bool showsFocus(QWidget& widget) {
    constexpr int kClearly = 60;  // of 3 * 255
    QWidget& window = *widget.window();
    for (QWidget* parent = widget.parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent)) area->ensureWidgetVisible(&widget);
    }
    const auto grabbed = [&] {
        QCoreApplication::processEvents();
        const QRect place(widget.mapTo(&window, QPoint()), widget.size());
        return window.grab(place).toImage().convertToFormat(QImage::Format_RGB32);
    };
    widget.setFocus(Qt::TabFocusReason);
    const QImage with = grabbed();
    widget.clearFocus();
    const QImage without = grabbed();
    widget.setFocus(Qt::TabFocusReason);
    int different = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x) {
            const QColor one = with.pixel(x, y);
            const QColor other = without.pixel(x, y);
            different += qAbs(one.red() - other.red()) + qAbs(one.green() - other.green()) +
                             qAbs(one.blue() - other.blue()) >
                         kClearly;
        }
    }
    return different >= qMin(widget.width(), widget.height());
}

/// The controls whose focus cannot be seen.
QString invisible(QWidget& window) {
    if (!QTest::qWaitForWindowActive(&window)) return "not active";
    if (!window.focusWidget()) QTest::keyClick(&window, Qt::Key_Tab);
    QStringList names;
    const QList<QWidget*> all = stops(window);
    if (all.isEmpty()) return "nothing has the focus";
    for (QWidget* widget : all) {
        if (!showsFocus(*widget)) names.append(widget->metaObject()->className() + (' ' + nameOf(widget)));
    }
    return names.join(", ");
}

class Opened : public WindowedApplication {
public:
    explicit Opened(const QStringList& movies = {}) {
        tool.setReport(FakeTool::report(kManyStreams));
        tool.setConversion(FakeTool::waitFor(path("go")));
        if (!QTest::qWaitForWindowActive(window.get())) qFatal("no active window");
        if (!movies.isEmpty() && !open(movies)) qFatal("no movie on the sheet");
    }
    /// Probes last until probe().
    void holdProbes() const {
        tool.setProbe("wait_until '[ -e \"" + path("probe").toUtf8() + "\" ]'\ncat \"$folder/report\" >&2");
    }
    void probe() { write("probe"); }
    QString focus() const { return nameOf(window->focusWidget()); }
    void type(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::keyClick(window->focusWidget(), key, modifiers);
    }
    /// Where the menu opens that `open` brings, and the row that is current then.
    std::pair<QPoint, QRect> menuOf(const std::function<void()>& open) const {
        QPoint place;
        QRect row;
        QTimer::singleShot(0, &list(), [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu) return;
            place = menu->pos();
            const QRect shown = list().visualRect(list().currentIndex()) & list().viewport()->rect();
            row = QRect(list().viewport()->mapToGlobal(shown.topLeft()), shown.size());
            menu->close();
        });
        open();
        return {place, row};
    }
};

}  // namespace

class KeyboardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        useVisibleIndicators();
        QApplication::setCursorFlashTime(0);
    }
    void cleanup() { useDarkPalette(false); }

    void eachControlIsReachedOnce_data() {
        const auto nothing = [](Opened&) {};
        using Prepare = std::function<void(Opened&)>;
        addRows<Prepare, QString>(
            {{"empty", nothing, "addMoviesButton addAction pauseContinueAction preferencesAction"},
             {"read",
              [](Opened& app) {
                  app.holdProbes();
                  app.delegate.openFiles({app.write("a.mkv")});
              },
              "informationLabel cancelButton addMoviesButton addAction pauseContinueAction "
              "preferencesAction"},
             {"sheet",
              [](Opened& app) {
                  QVERIFY(app.open({"a.srt", "a.mkv", "b.mkv"}));
              },
              "addButton addMoviesButton addAction pauseContinueAction preferencesAction cancelAllButton "
              "whyButton audioPopUp destinationPopUp cancelButton addAllButton"},
             {"a row removed",
              [](Opened& app) {
                  app.add("a.mkv");
                  app.add("b.mkv");
                  app.type(Qt::Key_Home);
                  app.type(Qt::Key_Delete);
              },
              "jobListView undoButton addAction pauseContinueAction preferencesAction"},
             {"all rows removed",
              [](Opened& app) {
                  app.add("a.mkv");
                  app.list().selectAll();
                  app.type(Qt::Key_Delete);
              },
              "addMoviesButton addAction pauseContinueAction preferencesAction undoButton"}});
    }
    void eachControlIsReachedOnce() {
        const auto [prepare, expected] = row<std::function<void(Opened&)>, QString>();
        Opened app;
        prepare(app);
        const QList<QWidget*> reached = stops(*app.window);
        QCOMPARE(namesOf(reached), expected);
        QCOMPARE(QSet<QWidget*>(reached.begin(), reached.end()), controls(*app.window));
        QList<QWidget*> backwards = stops(*app.window, Qt::Key_Backtab);
        std::reverse(backwards.begin() + 1, backwards.end());
        QCOMPARE(namesOf(backwards), expected);
    }

    void theFocusFollowsTheMovies() {
        Opened app;
        app.holdProbes();
        app.add("running.mkv");
        app.delegate.openFiles({app.write("a.mkv"), app.write("b.mkv"), app.write("c.mkv")});
        QCOMPARE(app.focus(), "informationLabel");
        for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Delete})
            app.type(key);  // Too early: of no effect.
        QCOMPARE(app.queue().count(), 1);
        QCOMPARE(app.sheet().waitingCount(), 2);
        QCOMPARE(app.job(0)->state(), JobState::Converting);
        app.probe();
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        QCOMPARE(app.focus(), "addButton");

        QFile::remove(app.path("probe"));
        app.type(Qt::Key_Escape);
        QCOMPARE(app.focus(), "informationLabel");
        app.type(Qt::Key_Tab);
        QCOMPARE(app.focus(), "cancelButton");
        app.probe();
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        QCOMPARE(app.focus(), "cancelButton");  // Chosen by the user.

        QFile::remove(app.path("probe"));
        app.type(Qt::Key_Space);
        app.list().setFocus();
        app.probe();
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        QCOMPARE(app.focus(), "jobListView");
        app.sheet().cancelAdd();
        QTRY_VERIFY(!app.find<QWidget>("addSheetView")->isVisible());

        // The page without rows has a control, too.
        app.queue().removeAll();
        QVERIFY(app.open({"d.mkv"}));
        QCOMPARE(app.focus(), "addButton");
        app.type(Qt::Key_Escape);
        QTRY_VERIFY(!app.find<QWidget>("addSheetView")->isVisible());
        QCOMPARE(app.focus(), "addMoviesButton");
    }

    void theMenuOpensAtItsRow() {
        Opened app;
        const auto pressMenuKey = [&] {  // As the platform sends it.
            QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
            QApplication::sendEvent(&app.list(), &event);
        };
        app.queue().pauseContinueClicked(true);
        for (int i = 0; i < 40; ++i)
            app.add(QStringLiteral("%1.mkv").arg(i));
        app.list().setFocus();
        for (const int current : {1, 35}) {
            app.list().setCurrentIndex(app.list().model()->index(current, 0));
            app.list().verticalScrollBar()->setValue(0);  // Row 35 is out of view.
            const auto [place, shown] = app.menuOf(pressMenuKey);
            QVERIFY2(shown.contains(place), qPrintable(QDebug::toString(place) + QDebug::toString(shown)));
            QCOMPARE(app.list().currentIndex().row(), current);
            QVERIFY(app.list().viewport()->rect().contains(app.list().visualRect(app.list().currentIndex())));
        }
        // By keys alone to a command.
        QTimer::singleShot(0, &app.list(), [] {
            QWidget* menu = QApplication::activePopupWidget();
            if (!menu) return;
            QTest::keyClick(menu, Qt::Key_Up);
            QTest::keyClick(menu, Qt::Key_Return);
        });
        pressMenuKey();
        QCOMPARE(app.queue().count(), 39);
    }

    void noLetterTwice_data() { addRows<bool>({{"running", false}, {"paused", true}}); }
    void noLetterTwice() {
        const auto [isPaused] = row<bool>();
        Opened app({"a.mkv", "b.mkv"});
        if (isPaused) app.queue().pauseContinueClicked(true);
        const QString taken = mnemonics::takenBeside(*app.window);
        QVERIFY2(QSet<QChar>(taken.begin(), taken.end()).size() == taken.size(), qPrintable(taken));
        for (const char* name : {"addButton", "addAllButton", "cancelButton", "cancelAllButton", "whyButton"})
            QVERIFY2(app.find<QAbstractButton>(name)->text().contains('&'), name);
        for (const char* name : {"audioPopUp", "destinationPopUp"}) {
            app.find<QWidget>("cancelButton")->setFocus();
            QTest::keyClick(app.window.get(), name[0] == 'a' ? Qt::Key_U : Qt::Key_T, Qt::AltModifier);
            QCOMPARE(app.focus(), name);
        }
        QTest::keyClick(app.window.get(), isPaused ? Qt::Key_A : Qt::Key_S, Qt::AltModifier);
        QTRY_COMPARE(app.queue().count(), 1);
    }

    void lettersOfOtherTitles_data() {
        addRows<QString, QString, QString>({{"the first", "Hinzufügen", "H", "H&inzufügen"},
                                            {"an ampersand stays", "A & B", "A", "A && &B"},
                                            {"none is free", "Aa", "A", "Aa"}});
    }
    void lettersOfOtherTitles() {
        const auto [title, taken, expected] = row<QString, QString, QString>();
        QCOMPARE(mnemonics::added(title, taken), expected);
    }

    void theFocusCanBeSeen_data() { addRows<bool>({{"light", false}, {"dark", true}}); }
    void theFocusCanBeSeen() {
        const auto [isDark] = row<bool>();
        useDarkPalette(isDark);
        Opened app;
        app.add("c.mkv");
        app.add("d.mkv");
        app.list().setCurrentIndex(app.list().model()->index(0, 0));
        app.type(Qt::Key_Delete);
        QVERIFY(app.open({"a.srt", "a.mkv", "b.mkv"}));
        const auto* sliding = app.find<QWidget>("addSheetView")->findChild<QVariantAnimation*>();
        QTRY_COMPARE(sliding->state(), QAbstractAnimation::Stopped);
        QCOMPARE(invisible(*app.window), "");
        app.sheet().cancelAll();
        app.holdProbes();
        app.delegate.openFiles({app.write("e.mkv")});
        QCOMPARE(app.focus(), "informationLabel");
        QTRY_COMPARE(sliding->state(), QAbstractAnimation::Stopped);
        QCOMPARE(invisible(*app.window), "");

        app.window->openPreferences();
        QVERIFY(QTest::qWaitForWindowActive(app.window->preferencesWindow()));
        auto* pages = app.window->preferencesWindow()->findChild<QListWidget*>("pageList");
        for (int page = 0; page < pages->count(); ++page) {
            pages->setCurrentRow(page);
            pages->setFocus();
            QCOMPARE(invisible(*app.window->preferencesWindow()), "");
        }
        app.find<QAction>("aboutAction")->trigger();
        QCOMPARE(invisible(*app.find<AboutWindow>("AboutWindow")), "");

        FakeWebEngine engine;
        const Documentation documentation(app.delegate, engine, {QIcon(), addWindowMenu});
        app.delegate.openDocumentationWindow(0);
        QWidget* pagesOfHelp = documentation.documentationWindow();
        QVERIFY(QTest::qWaitForWindowActive(pagesOfHelp));
        QTest::keyClick(pagesOfHelp, Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(invisible(*pagesOfHelp), "");
    }

    void theFocusCanBeSeenInAlerts_data() { theFocusCanBeSeen_data(); }
    void theFocusCanBeSeenInAlerts() {
        const auto [isDark] = row<bool>();
        useDarkPalette(isDark);
        const TestHome home;
        for (const auto control : {AlertControl::None, AlertControl::Input, AlertControl::CheckBox,
                                   AlertControl::ColorWell, AlertControl::InputText, AlertControl::OutputText,
                                   AlertControl::SelectionPopup, AlertControl::SelectionMatrix}) {
            Alert alert;
            alert.title = "Title";
            alert.message = control == AlertControl::None ? QString("Much text. ").repeated(900) : "Text";
            alert.buttons = {"OK", "Cancel"};
            alert.suppressionTitle = "Never again";
            alert.controlTitle = "Choice";
            alert.items = QStringList{"one", "two"};
            alert.control = control;
            AlertDialog dialog(alert, nullptr);
            dialog.show();
            QCOMPARE(QString::number(static_cast<int>(control)) + invisible(dialog),
                     QString::number(static_cast<int>(control)));
        }

        PXRatingWindowController controller;
        const std::unique_ptr<RatingWindow> rating(new RatingWindow(controller));
        rating->show();
        rating->activateWindow();
        QCOMPARE(invisible(*rating), "");
        controller.happyClicked();
        QCOMPARE(invisible(*rating), "");
        controller.problemsClicked();
        QCOMPARE(invisible(*rating), "");
    }
};

QTEST_MAIN(KeyboardTest)
#include "tst_Keyboard.moc"
