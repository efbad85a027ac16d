#include "fakes/InstantProof.h"
#include "fakes/OpenedMail.h"
#include "fakes/Table.h"
#include "fakes/WindowedApplication.h"
#include "ui/help/AboutWindow.h"
#include "ui/look/Colors.h"
#include "ui/look/TabularText.h"
#include "ui/preferences/PreferencesWindow.h"
#include "ui/widgets/ElidedLabel.h"
#include "ui/window/JobListModel.h"
#include "ui/window/QueueSummary.h"
#include "ui/window/WindowWatch.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using jobrow::Button;

namespace {

constexpr int kPatience = 60000;  // ms, for short operations even on a busy machine

constexpr const char* kManyStreams = R"(
    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 448 kb/s (default)
    Stream #0:2(ger): Audio: dts (DTS), 48000 Hz, 5.1(side), fltp, 1536 kb/s
    Stream #0:3(eng): Audio: ac3, 48000 Hz, stereo, fltp, 192 kb/s
    Metadata:
      title           : Notes
    Stream #0:4(eng): Subtitle: hdmv_pgs_subtitle
    Stream #0:5(eng): Subtitle: subrip
)";

/// Drags the data to that place and drops it if it is accepted. Returns the action; Qt::IgnoreAction: it was
/// refused.
Qt::DropAction dragAndDrop(QWidget& target, QPoint place, const QMimeData& data) {
    QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(&target, &enter);
    if (!enter.isAccepted()) return Qt::IgnoreAction;
    QDropEvent drop(place, enter.dropAction(), &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &drop);
    return drop.dropAction();
}
bool dragAndDrop(QWidget& target, const QList<QUrl>& urls) {
    QMimeData data;
    data.setUrls(urls);
    return dragAndDrop(target, target.rect().center(), data) == Qt::CopyAction;
}

/// A window whose queue has these movies, the first one on top. No conversion ends before `finish()`.
class Queued : public WindowedApplication {
public:
    enum class Begins { Running, Paused };
    explicit Queued(QStringList names = {}, Begins begins = Begins::Running) {
        tool.setConversion(FakeTool::waitFor(path("go")));
        if (begins == Begins::Paused) queue().pauseContinueClicked(true);
        while (!names.isEmpty())
            add(names.takeLast());
    }
    void select(int row) const { list().setCurrentIndex(list().model()->index(row, 0)); }
    void finish(int count) {
        write("go");
        QTRY_COMPARE_WITH_TIMEOUT(queue().jobCountWithState(JobState::Finished), count, kPatience);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::keyClick(&list(), key, modifiers);
    }
    QString names() {
        QStringList names;
        for (qsizetype row = 0; row < queue().count(); ++row)
            names.append(job(row)->fileInfo().fileName.chopped(4));
        return names.join(' ');
    }
    QString selected() {
        QStringList names;
        for (int row = 0; row < queue().count(); ++row) {
            const QModelIndex index = list().model()->index(row, 0);
            if (list().selectionModel()->isSelected(index)) names.append(index.data().toString().chopped(4));
        }
        return names.join(' ');
    }
    QPoint nameOf(int row) const { return layoutOf(row).name.center(); }
    void clickRow(int row, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, modifiers, nameOf(row));
    }
    void doubleClickRow(int row, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseDClick(list().viewport(), Qt::LeftButton, modifiers, nameOf(row));
        QTest::mouseRelease(list().viewport(), Qt::LeftButton, modifiers, nameOf(row));
    }
    void dragTo(QPoint place) const {
        QMouseEvent move(QEvent::MouseMove, place, list().viewport()->mapToGlobal(place), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list().viewport(), &move);
    }
    /// What is dragged out of that row; null: nothing. Valid until events are processed.
    QMimeData* dragged(int row) const {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QTest::mousePress(list().viewport(), Qt::LeftButton, {}, nameOf(row));
        dragTo(nameOf(row) + QPoint(0, QApplication::startDragDistance()));
        QTest::mouseRelease(find<QWidget>("toolBar"), Qt::LeftButton);
        const auto* drag = list().findChild<QDrag*>();
        return drag ? drag->mimeData() : nullptr;
    }
    /// The enabled titles of the menu that a right click on the row or, without a row, the key opens.
    QStringList contextMenu(int row = -1);
    void choose(const QString& title) const {
        QMenu menu;
        list().fillMenu(menu);
        for (QAction* action : menu.actions()) {
            if (action->text().section('\t', 0, 0) == title) action->trigger();
        }
    }
};

QStringList enabledTitles(const QMenu& menu) {
    QStringList titles;
    for (const QAction* action : menu.actions()) {
        if (!action->isSeparator() && action->isEnabled())
            titles.append(action->text().section('\t', 0, 0).remove('&'));
    }
    return titles;
}

QStringList Queued::contextMenu(int row) {
    QStringList titles;
    QTimer::singleShot(0, &list(), [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu) return;
        titles = enabledTitles(*menu);
        menu->close();
    });
    if (row < 0) {
        press(Qt::Key_F10, Qt::ShiftModifier);
    } else {
        const QPoint place = nameOf(row);
        QTest::mouseClick(list().viewport(), Qt::RightButton, {}, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, list().viewport()->mapToGlobal(place));
        QApplication::sendEvent(list().viewport(), &event);
    }
    return titles;
}

}  // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tenMoviesAndTwoSubtitlesAreDropped() {
        WindowedApplication app;
        QList<QUrl> urls;
        for (const char* name : {"0.mkv", "1.mkv", "2.mkv", "3.mkv", "4.mkv", "5.mkv", "6.mkv", "7.mkv",
                                 "8.mkv", "9.mkv", "3.srt", "7.en.ass"})
            urls.append(QUrl::fromLocalFile(app.write(QString("Movie ") + name)));
        QCOMPARE(app.find<QStackedWidget>("pages")->currentWidget()->objectName(), "emptyView");
        QVERIFY(dragAndDrop(*app.window, urls));
        auto* sheet = app.find<QWidget>("addSheetView");
        QTRY_COMPARE(sheet->height(), qMax(117, sheet->minimumSizeHint().height()));
        for (int i = 0; i < 10; ++i) {
            QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
            QCOMPARE(app.find<QComboBox>("audioPopUp")->currentText(), "#1: eng (ac3)");
            QCOMPARE(app.find<QComboBox>("destinationPopUp")->currentText(), "out");
            // One with the mouse, one with the keyboard, whose focus is on the sheet.
            i % 2 == 0 ? QTest::mouseClick(app.find<QPushButton>("addButton"), Qt::LeftButton)
                       : QTest::keyClick(app.window->focusWidget(), Qt::Key_Return);
            QCOMPARE(app.queue().count(), i + 1);
        }
        QTRY_VERIFY(!sheet->isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 10, kPatience);
        QVERIFY(QFile::exists(app.path("out/Movie 3.mp4")));
        QVERIFY(app.job(3)->fileInfo().subtitleFileURL && app.job(7)->fileInfo().subtitleFileURL);
        QCOMPARE(app.list().model()->rowCount(), 10);
        auto* clean = app.find<QAction>("cleanAction");
        QTest::mouseClick(app.find<QToolBar>("toolBar")->widgetForAction(clean), Qt::LeftButton);
        QCOMPARE(app.find<QStackedWidget>("pages")->currentWidget()->objectName(), "emptyView");
        QVERIFY(!clean->isEnabled());
    }

    void twoActionsForTenMovies() {
        WindowedApplication app;
        QList<QUrl> urls;
        for (int i = 0; i < 10; ++i)
            urls.append(QUrl::fromLocalFile(app.write(QString("Movie %1.mkv").arg(i))));
        QVERIFY(dragAndDrop(*app.window, urls));
        auto* addAll = app.find<QPushButton>("addAllButton");
        QTRY_VERIFY_WITH_TIMEOUT(addAll->isVisible() && addAll->isEnabled(), kPatience);
        QCOMPARE(addAll->text().remove('&'), "Add All (10)");
        QTest::mouseClick(addAll, Qt::LeftButton);
        QSet<QString> totals;
        connect(&app.delegate.progress(), &QueueProgress::changed, this,
                [&] { totals.insert(app.find<QLabel>("totalLabel")->text()); });
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 10, kPatience);
        QVERIFY(totals.contains("8 of 10") || totals.contains("9 of 10"));
        QVERIFY(!app.find<QWidget>("totalProgress")->isVisible());
        QTRY_VERIFY(!app.find<QWidget>("addSheetView")->isVisible());
        for (int i = 0; i < 10; ++i)
            QCOMPARE(app.job(i)->fileInfo().fileName, QString("Movie %1.mkv").arg(i));
    }

    void uselessDropsAreRefusedWithTheReason() {
        const WindowedApplication app;
        QVERIFY(!dragAndDrop(*app.window, {QUrl::fromLocalFile(app.write("notes.pdf"))}));
        QCOMPARE(app.find<QStatusBar>("statusBar")->currentMessage(), "“notes.pdf” is not a movie.");
    }

    void aDropIntoASandboxIsHandedOver() {
        WindowedApplication app;
        app.desktop.sandboxed = true;
        app.desktop.transfers.insert("key", {app.write("inside.mkv")});
        QMimeData data;
        data.setUrls({QUrl("file:///outside/inside.mkv")});
        data.setData("application/vnd.portal.filetransfer", QByteArray("key\0", 4));
        QCOMPARE(dragAndDrop(*app.window, {}, data), Qt::CopyAction);
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
    }

    void rowsByMouse() {
        Queued app({"a.mkv"});
        const ConversionJob* job = app.job(0);
        QCOMPARE(job->state(), JobState::Converting);
        app.click(0, Button::PauseContinue);
        QCOMPARE(job->state(), JobState::Paused);
        app.click(0, Button::PauseContinue);
        QCOMPARE(job->state(), JobState::Converting);
        app.finish(1);
        app.click(0, Button::Reveal);
        app.click(0, Button::Reveal, Qt::ShiftModifier);
        QCOMPARE(app.desktop.revealed, QStringList({app.path("out/a.mkv.mp4"), app.path("a.mkv")}));

        // Pressed on the button, released elsewhere: no action.
        QTest::mousePress(app.list().viewport(), Qt::LeftButton, {}, app.centreOf(0, Button::Reveal));
        QTest::mouseRelease(app.list().viewport(), Qt::LeftButton, {}, app.centreOf(0, Button::More));
        QCOMPARE(app.desktop.revealed.size(), 2);
        QTimer::singleShot(0, &app.list(), [] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            for (QAction* action : menu->actions()) {
                if (action->text().startsWith("Remove")) action->trigger();
            }
            menu->close();
        });
        app.click(0, Button::More);
        QCOMPARE(app.queue().count(), 0);
        QVERIFY(QFile::exists(app.path("out/a.mkv.mp4")));
    }

    void rowsByKeyboard() {
        Queued app({"a.mkv", "b.mkv", "c.mkv"});
        app.list().setFocus();
        for (const auto key : {Qt::Key_Home, Qt::Key_Down, Qt::Key_Down, Qt::Key_Space})
            app.press(key);
        QCOMPARE(app.list().currentIndex().row(), 2);
        QCOMPARE(app.job(2)->state(), JobState::Paused);
        app.press(Qt::Key_Delete);
        QCOMPARE(app.queue().count(), 2);
        app.finish(2);
        app.press(Qt::Key_Home);
        app.press(Qt::Key_Return, Qt::ControlModifier);
        app.press(Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(app.desktop.revealed, QStringList({app.path("out/a.mkv.mp4"), app.path("a.mkv")}));
    }

    void commandsConcernAllSelectedRows() {
        Queued app({"a.mkv", "b.mkv", "c.mkv", "d.mkv", "e.mkv"});
        const ConversionJob* running = app.job(4);
        QSignalSpy changed(&app.queue(), &JobQueue::jobStateChanged);
        app.clickRow(1);
        app.clickRow(3, Qt::ShiftModifier);
        app.clickRow(2, Qt::ControlModifier);
        QCOMPARE(app.selected(), "b d");
        const QStringList two{"Start 2 Movies Now", "Start 2 Movies Next", "Details…", "Remove 2 Movies"};
        QCOMPARE(app.contextMenu(3), two);
        QCOMPARE(app.contextMenu(), two);
        app.clickRow(3);
        QCOMPARE(app.selected(), "d");
        QVERIFY(app.contextMenu(0).contains("Remove from the list"));
        QCOMPARE(app.selected(), "a");

        app.clickRow(2, Qt::ShiftModifier);
        app.click(1, Button::Remove);  // That row alone.
        QCOMPARE(app.names(), "a c d e");
        QCOMPARE(app.selected(), "a c");
        app.press(Qt::Key_Delete);
        QCOMPARE(app.names(), "d e");
        QCOMPARE(app.selected(), "d");  // What comes next.
        QCOMPARE(changed.count(), 0);

        app.window->activateWindow();  // The menus were active.
        QVERIFY(QTest::qWaitForWindowActive(app.window.get()));
        QTest::keyClick(app.window.get(), Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(app.selected(), "d e");
        app.press(Qt::Key_Space);
        QCOMPARE(running->state(), JobState::Paused);
        app.press(Qt::Key_Space);
        QCOMPARE(running->state(), JobState::Converting);
        QCOMPARE(app.job(0)->state(), JobState::Queued);
        app.press(Qt::Key_Delete);
        QCOMPARE(app.queue().count(), 0);
        QCOMPARE(changed.count(), 3);  // The pause, its end, and the pause until nobody wants it back.
        QVERIFY(app.presenter.shown.isEmpty());

        auto* bar = app.find<QWidget>("undoBar");
        QCOMPARE(bar->accessibleName(), "Removed 2 movie(s) from the list");
        QTest::keyClick(app.window.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(app.names(), "d e");
        QCOMPARE(running->state(), JobState::Converting);
        QCOMPARE(bar->accessibleName(), "Removed 2 movie(s) from the list");  // The one before.
        QTest::mouseClick(app.find<QPushButton>("undoButton"), Qt::LeftButton);
        QTest::mouseClick(app.find<QPushButton>("undoButton"), Qt::LeftButton);
        QCOMPARE(app.names(), "a b c d e");
        QVERIFY(!bar->isVisible() && !app.find<QAction>("undoAction")->isEnabled());
    }

    void aRubberBandSelects() {
        Queued app({"a.mkv", "b.mkv", "c.mkv"});
        QTest::mousePress(app.list().viewport(), Qt::LeftButton, {}, app.nameOf(2));  // It runs.
        for (const int row : {2, 1})
            app.dragTo(app.nameOf(row) - QPoint(10, 0));
        QTest::mouseRelease(app.list().viewport(), Qt::LeftButton, {}, app.nameOf(1));
        QCOMPARE(app.selected(), "b c");
    }

    void whatWaitsIsReordered() {
        Queued app({"a.mkv", "b.mkv", "c.mkv", "d.mkv", "running.mkv"});
        app.select(2);
        app.press(Qt::Key_Up, Qt::AltModifier);
        QCOMPARE(app.names(), "a c b d running");
        QCOMPARE(app.selected(), "c");
        app.press(Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(app.names(), "a b c d running");

        app.clickRow(1);
        app.clickRow(3, Qt::ControlModifier);
        const QMimeData* rows = app.dragged(3);
        QVERIFY(rows && !rows->hasUrls());
        QWidget& list = *app.list().viewport();
        QCOMPARE(dragAndDrop(list, list.rect().topLeft(), *rows), Qt::MoveAction);
        QCOMPARE(app.names(), "b d a c running");
        QCOMPARE(app.selected(), "b d");
        QCOMPARE(dragAndDrop(list, list.rect().bottomLeft(), *rows), Qt::MoveAction);
        QCOMPARE(app.names(), "a c b d running");  // Not below what runs.
        QCOMPARE(dragAndDrop(*app.window, {}, *rows), Qt::IgnoreAction);
        QVERIFY(!app.dragged(4));
        app.select(1);
        app.choose("Start Next");
        QCOMPARE(app.names(), "c a b d running");
    }

    void finishedMoviesAreDraggedOutPlayedAndCopied() {
        Queued app({"a.mkv", "b.mkv", "c.mkv"});
        app.finish(3);
        QFile::remove(app.path("out/b.mkv.mp4"));
        app.list().selectAll();
        const QMimeData* files = app.dragged(0);
        QVERIFY(files);
        QCOMPARE(files->urls(), QList<QUrl>({QUrl::fromLocalFile(app.path("out/a.mkv.mp4")),
                                             QUrl::fromLocalFile(app.path("out/c.mkv.mp4"))}));
        QCOMPARE(dragAndDrop(*app.list().viewport(), {}, *files), Qt::IgnoreAction);
        QVERIFY(dragAndDrop(*app.list().viewport(), {QUrl::fromLocalFile(app.write("other.mkv"))}));

        QVERIFY(app.contextMenu().contains("Show 3 Files"));
        app.choose("Copy 3 Receipts");
        const QString copied = QApplication::clipboard()->text();
        QVERIFY2(copied.startsWith("a.mkv\n") && copied.contains("\n\nb.mkv\n"), qPrintable(copied));

        app.doubleClickRow(0);
        QCOMPARE(app.desktop.opened, QList{QUrl::fromLocalFile(app.path("out/a.mkv.mp4"))});
        app.doubleClickRow(0, Qt::ShiftModifier);
        QCOMPARE(app.desktop.revealed, QStringList(app.path("a.mkv")));
        app.select(1);
        app.press(Qt::Key_P, Qt::ControlModifier);
        QCOMPARE(app.status, "“b.mkv.mp4” can't be played, as it is no longer in “" + app.path("out") + "”.");
        QCOMPARE(app.desktop.opened.size(), 1);
    }

    void theListFollowsWhatRuns() {
        Queued app({}, Queued::Begins::Paused);
        for (int i = 0; i < 60; ++i)
            app.add(QStringLiteral("%1.mkv").arg(i));
        const auto isInView = [&](int row) {
            const QRect place = app.list().visualRect(app.list().model()->index(row, 0));
            return app.list().viewport()->rect().contains(place);
        };
        ConversionJob* last = app.job(0);
        const auto runs = [&](int row) {
            last->pause();
            last = app.job(row);
            last->continueJob();
        };
        auto* button = app.find<QPushButton>("showRunningButton");
        runs(30);
        QTRY_VERIFY(isInView(30));
        QVERIFY(!button->isVisible());
        for (int i = 0; i < 60; ++i) {
            const QPoint place = app.list().viewport()->rect().center();
            QWheelEvent wheel(place, app.list().viewport()->mapToGlobal(place), {}, {0, 240}, {}, {},
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(app.list().viewport(), &wheel);
        }
        QTRY_VERIFY(button->isVisible());
        runs(40);
        QCoreApplication::processEvents();
        QVERIFY(isInView(0) && button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(isInView(40) && !button->isVisible());
        runs(5);
        QTRY_VERIFY(isInView(5));
        app.list().setFocus();
        app.press(Qt::Key_End);
        QTRY_VERIFY(button->isVisible());
        app.find<QAction>("showRunningAction")->trigger();
        QVERIFY(isInView(5) && !button->isVisible());
    }

    void aFailureIsExplained() {
        Queued app;
        app.tool.setConversion("echo 'av_interleaved_write_frame(): No space left on device' >&2\nexit 1\n");
        const ConversionJob* job = app.add("a.mkv");
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), JobState::Failed, kPatience);
        app.presenter.shown.clear();
        app.click(0, Button::Explain);
        app.select(0);
        app.press(Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(app.presenter.shown.size(), 2);
        QVERIFY(app.presenter.messages().first().contains("not enough free space left"));
        app.tool.setConversion("echo movie > \"$destination\"\n");
        app.click(0, Button::TryAgain);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), JobState::Finished, kPatience);
        Q_EMIT app.delegate.failureActions().preferenceRequested("DisableBuiltinSubtitles");
        const QWidget* preferences = app.window->preferencesWindow();
        QVERIFY(preferences && preferences->isVisible());
        QVERIFY(preferences->findChild<QWidget*>("internalCheck")->isVisible());
        QCOMPARE(preferences->focusWidget()->objectName(), "internalCheck");
    }

    void theMenuOfARow() {
        Queued app({"it's.mkv"});
        app.select(0);
        QMenu running;
        app.list().fillMenu(running);
        QCOMPARE(enabledTitles(running), QStringList({"Pause", "Show the file", "Show the original movie",
                                                      "Details…", "Copy command line", "Stop and remove"}));
        for (QAction* action : running.actions()) {
            if (action->text().startsWith("Copy")) action->trigger();
        }
        const QString copied = QApplication::clipboard()->text();
        QVERIFY2(copied.startsWith("ffmpeg ") && copied.contains("'\\''"), qPrintable(copied));
        app.finish(1);
        QMenu finished;
        app.list().fillMenu(finished);
        QVERIFY(!enabledTitles(finished).contains("Pause"));
    }

    void aMenuStaysItsJobs() {
        Queued app({"a.mkv", "b.mkv"}, Queued::Begins::Paused);
        app.select(0);
        QMenu menu;
        app.list().fillMenu(menu);
        app.job(0)->remove();
        for (QAction* action : menu.actions())
            action->trigger();
        QCOMPARE(app.queue().count(), 1);
        QCOMPARE(app.job(0)->state(), JobState::Queued);
    }

    void heldKeysAndDoubleClicksRemoveOneRow() {
        Queued app({"a.mkv", "b.mkv", "c.mkv", "d.mkv"}, Queued::Begins::Paused);
        const QPoint remove = app.centreOf(0, Button::Remove);
        QTest::mouseClick(app.list().viewport(), Qt::LeftButton, {}, remove);
        QTest::mouseDClick(app.list().viewport(), Qt::LeftButton, {}, remove);
        QTest::mouseRelease(app.list().viewport(), Qt::LeftButton, {}, remove);
        QCOMPARE(app.queue().count(), 3);
        app.select(0);
        for (const bool isRepeat : {false, true, true}) {
            QKeyEvent held(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, QString(), isRepeat);
            QApplication::sendEvent(&app.list(), &held);
        }
        QCOMPARE(app.queue().count(), 2);
    }

    void typedAheadOnTheSheet() {
        Queued app({"running.mkv"});
        app.list().setFocus();
        app.select(0);
        QVERIFY(app.open({"a.mkv", "b.mkv"}));
        QCOMPARE(app.window->focusWidget(), app.find<QPushButton>("addButton"));
        QTest::keyClick(app.window->focusWidget(), Qt::Key_Space);
        QCOMPARE(app.queue().count(), 2);
        // The next movie is being probed: the sheet gets the keys and ignores them.
        for (const auto key : {Qt::Key_Space, Qt::Key_Delete, Qt::Key_Return})
            QTest::keyClick(app.window->focusWidget(), key);
        QCOMPARE(app.queue().count(), 2);
        QCOMPARE(app.job(1)->state(), JobState::Converting);

        // A list that the user has focused keeps the focus.
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        app.list().setFocus();
        app.find<QAction>("pauseContinueAction")->trigger();
        QCOMPARE(app.window->focusWidget(), &app.list());
        app.sheet().cancelAdd();
    }

    void theQueueIsPausedAndResumed() {
        Queued app({"a.mkv", "b.mkv"});
        auto* action = app.find<QAction>("pauseContinueAction");
        QCOMPARE(action->text(), "Pause Queue");
        QCOMPARE(action->toolTip(), "Pause Queue");
        QCOMPARE(app.window->windowTitle(), "Ravelin  [2 Job(s), 1 Queued]");
        action->trigger();
        QCOMPARE(action->text(), "Resume Queue");
        QCOMPARE(app.window->windowTitle(), "Ravelin (Paused) [2 Job(s), 1 Queued]");
        QCOMPARE(app.find<QPushButton>("addButton")->text(), "&Add to Queue");
        action->trigger();
        QCOMPARE(app.queue().jobCountWithState(JobState::Converting), 1);
        QCOMPARE(app.find<QPushButton>("addButton")->text(), "&Start Conversion");
        app.job(1)->remove();
        QVERIFY(action->toolTip().contains("Pause “a.mkv”"));
        action->trigger();
        QVERIFY(action->toolTip().contains("Continue “a.mkv”"));
    }

    void theEndOfTheQueueIsChosenAndCancelled_data() {
        addRows<QString, int>(
            {{"cancelled", "cancelEndActionButton", 0}, {"at once", "endActionNowButton", 1}});
    }
    void theEndOfTheQueueIsChosenAndCancelled() {
        const auto [button, count] = row<QString, int>();
        Queued app({"a.mkv"});
        QVERIFY(QTest::qWaitForWindowActive(app.window.get()));
        QVERIFY(!app.find<QAction>("endSleepAction")->isEnabled());
        auto* menu = app.find<QMenu>("queueMenu");
        QTest::keyClick(app.window.get(), Qt::Key_Q, Qt::AltModifier);
        QTRY_VERIFY(menu->isVisible());
        QTest::keyClick(menu, Qt::Key_D);  // When the Queue Is Done
        auto* choices = app.find<QMenu>("endActionMenu");
        QTRY_VERIFY(choices->isVisible());
        QTest::keyClick(choices, Qt::Key_S);
        QVERIFY(app.find<QAction>("endSleepAction")->isChecked());

        const auto* bar = app.find<QWidget>("endActionBar");
        app.window->close();
        QVERIFY(!bar->isVisible());
        app.finish(1);
        QVERIFY(bar->isVisible());
        QCOMPARE(bar->findChild<ElidedLabel*>()->text(), "The computer goes to sleep in 60 s.");
        QTest::mouseClick(bar->findChild<QPushButton*>(button), Qt::LeftButton);
        QVERIFY(!bar->isVisible());
        QCOMPARE(app.desktop.carriedOut.size(), count);
        QVERIFY(app.find<QAction>("endNothingAction")->isChecked());
    }

    void closedWhileAJobRunsAndOpenedAgain() {
        Queued app({"a.mkv"});
        app.window->resize(700, 500);
        QVERIFY(QTest::qWaitForWindowActive(app.window.get()));
        QTest::keyClick(app.window.get(), Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!app.window->isVisible());
        QCOMPARE(app.job(0)->state(), JobState::Converting);
        app.finish(1);
        app.delegate.applicationShouldHandleReopen();
        QVERIFY(app.window->isVisible());
        // Another open window can show it, too.
        app.window->openPreferences();
        app.window->close();
        const auto* menu = app.window->preferencesWindow()->findChild<QMenu*>("windowMenu");
        auto* action = app.window->preferencesWindow()->findChild<QAction*>("showMainWindowAction");
        QVERIFY(menu->actions().contains(action));
        action->trigger();
        QVERIFY(app.window->isVisible());
        // The next start restores the window's geometry.
        const MainWindow next(app.delegate);
        QCOMPARE(next.size(), QSize(700, 500));
    }

    void theLastWindowThatIsClosedEndsIt() {
        WindowedApplication app;
        const WindowWatch watch(app.delegate.openWindows(), *app.window);
        QSignalSpy terminating(&app.delegate, &AppDelegate::terminating);
        app.window->openPreferences();
        QWidget* preferences = app.window->preferencesWindow();
        QVERIFY(QTest::qWaitForWindowActive(preferences));
        app.window->close();
        QTRY_VERIFY(!app.delegate.openWindows().isMainOpen());
        QTest::keyClick(preferences, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!preferences->isVisible());
        QTRY_COMPARE(terminating.count(), 1);
    }

    void aClosedWindowIsSeenToGoOn() {
        Queued app({"a.mkv"});
        const WindowWatch watch(app.delegate.openWindows(), *app.window);
        QSignalSpy terminating(&app.delegate, &AppDelegate::terminating);
        QVERIFY(QTest::qWaitForWindowActive(app.window.get()));
        QTest::keyClick(app.window.get(), Qt::Key_W, Qt::ControlModifier);
        QTRY_COMPARE(app.desktop.notifications.size(), 1);
        QCOMPARE(app.desktop.notifications.first().title, "Ravelin goes on converting");
        Q_EMIT app.delegate.watchFolder().arrived(app.write("b.mkv"));
        QTRY_VERIFY(app.isReady());
        QVERIFY(!app.window->isVisible());
        QCOMPARE(app.desktop.notifications.size(), 2);

        Q_EMIT app.desktop.notificationActivated({}, "token");  // "Show"
        QVERIFY(app.window->isVisible());
        QTRY_VERIFY(app.delegate.openWindows().isMainOpen());
        app.window->close();
        QTRY_VERIFY(!app.delegate.openWindows().isMainOpen());
        Q_EMIT app.desktop.quitActivated("token");  // The answer is "Cancel".
        QVERIFY(app.window->isVisible());
        QCOMPARE(app.presenter.shown.size(), 1);
        QCOMPARE(terminating.count(), 0);
    }

    void thePlanFollowsTheChoices() {
        Queued app;
        app.tool.setReport(FakeTool::report(kManyStreams));
        app.delegate.openFiles({app.write("a.srt"), app.write("a.mkv"), app.write("b.mkv")});
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        const auto text = [&](const char* name) { return app.find<ElidedLabel>(name)->text(); };
        QCOMPARE(text("pictureName") + u' ' + text("pictureOutcome"), "H.264 1080p copied");
        QCOMPARE(text("soundName"), "English AC3 5.1");
        QCOMPARE(text("leftOutName"), "German, Notes, 1 picture subtitle(s), 1 subtitle(s)");
        QCOMPARE(text("subtitlesOutcome"), "none");
        const int height = app.find<QWidget>("planStrip")->height();

        auto* audio = app.find<QComboBox>("audioPopUp");
        audio->setFocus();
        QTest::keyClick(audio, Qt::Key_Down);
        QCOMPARE(audio->currentText(), "#2: ger (dts) [5.1]");
        QCOMPARE(audio->accessibleDescription(), "German, DTS 5.1");
        QCOMPARE(text("soundName"), "German DTS 5.1");
        QCOMPARE(text("soundOutcome"), "becomes AAC stereo, 128 kb/s");
        setDefaultInt("AACBitrate", 2);
        QCOMPARE(text("soundOutcome"), "becomes AAC stereo, 160 kb/s");
        setDefaultInt(kDisableBuiltinSubtitlesKey, 0);
        QCOMPARE(text("subtitlesName"), "English");

        // The next movie is probed: its lines are empty, and nothing moves.
        QTest::keyClick(audio, Qt::Key_Escape);
        QVERIFY(!app.isReady());
        QCOMPARE(text("soundName") + text("leftOutName"), QString());
        QCOMPARE(app.find<QWidget>("planStrip")->height(), height);
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        QCOMPARE(text("subtitleFileName"), "a.srt");
        QCOMPARE(app.find<QWidget>("planStrip")->height(), height);
    }

    void aSubtitleFileIsTakenOff() {
        Queued app;
        app.delegate.openFiles({app.write("a.srt"), app.write("a.mkv")});
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        QVERIFY(app.find<ElidedLabel>("informationLabel")->text().endsWith("1 (0+1)"));
        QTest::mouseClick(app.find<QWidget>("removeSubtitleButton"), Qt::LeftButton);
        QVERIFY(app.find<ElidedLabel>("informationLabel")->text().endsWith("1 (0)"));
        QVERIFY(!app.find<QWidget>("removeSubtitleButton")->isVisible());
        QTest::keyClick(app.window->focusWidget(), Qt::Key_Return);
        QCOMPARE(app.queue().count(), 1);
        QVERIFY(!app.job(0)->fileInfo().subtitleFileURL);
    }

    void whyTracksAreLeftOut() {
        Queued app;
        app.tool.setReport(FakeTool::report(kManyStreams));
        app.open({"a.mkv"});
        auto* why = app.find<QPushButton>("whyButton");
        for (int i = 0; i < 10 && app.window->focusWidget() != why; ++i)
            QTest::keyClick(app.window->focusWidget(), Qt::Key_Tab);
        QCOMPARE(app.window->focusWidget(), why);
        QTest::keyClick(why, Qt::Key_Return);
        QCOMPARE(app.queue().count(), 0);
        const QPointer popup = app.find<QWidget>("leftOutPopup");
        QVERIFY(popup && popup->isVisible());
        QVERIFY(popup->accessibleDescription().contains("German DTS 5.1: only one audio track is carried"));
        QTest::keyClick(popup, Qt::Key_Escape);
        QTRY_VERIFY(!popup);
        QVERIFY(app.isReady());

        // At the lower edge of the screen it opens upwards.
        const QRect screen = app.window->screen()->availableGeometry();
        const int bottom = why->mapToGlobal(QPoint(0, why->height())).y();
        app.window->move(app.window->pos() + QPoint(0, screen.bottom() - bottom));
        QTest::mouseClick(why, Qt::LeftButton);
        const QRect place = app.find<QWidget>("leftOutPopup")->geometry();
        QVERIFY(place.bottom() < why->mapToGlobal(QPoint()).y());
    }

    void detailsOfAJob() {
        Queued app({"b.mkv", "a.mkv"});
        QVERIFY(QTest::qWaitForWindowActive(app.window.get()));
        app.list().setFocus();
        app.select(0);
        const auto* pane = app.find<QWidget>("detailsPane");
        const auto shown = [&] { return pane->isVisible() ? pane->findChild<ElidedLabel*>()->text() : ""; };
        app.press(Qt::Key_Return);
        QCOMPARE(shown(), "b.mkv");
        auto* text = app.find<QTextEdit>("detailsText");
        QVERIFY(app.list().isVisible());
        QCOMPARE(app.window->focusWidget(), &app.list());
        QVERIFY(text->toPlainText().contains("left out · only one audio track is carried"));
        app.press(Qt::Key_Down);
        QCOMPARE(shown(), "a.mkv");
        app.clickRow(0);
        app.doubleClickRow(0);
        QCOMPARE(shown(), "b.mkv");
        app.clickRow(1);

        // Each of the ways out, and in again.
        app.press(Qt::Key_Return);
        QCOMPARE(shown(), "");
        app.press(Qt::Key_Return, Qt::AltModifier);
        QCOMPARE(shown(), "a.mkv");
        QTest::keyClick(app.window->focusWidget(), Qt::Key_Tab);
        QCOMPARE(app.window->focusWidget(), text);
        QTest::keyClick(text, Qt::Key_Escape);
        QCOMPARE(shown(), "");
        QCOMPARE(app.window->focusWidget(), &app.list());
        int step = 0;
        for (const int row : {0, 1, 1}) {  // Opened, of another one, closed.
            QTest::mousePress(app.list().viewport(), Qt::RightButton, {}, app.nameOf(row));
            app.choose("Details…");
            QTest::mouseRelease(app.list().viewport(), Qt::RightButton, {}, app.nameOf(row));
            QCOMPARE(shown(), QStringList({"b.mkv", "a.mkv", ""})[step++]);
        }
        QCOMPARE(shown(), "");
        app.choose("Details…");
        QTest::mouseClick(app.find<QToolButton>("closeDetailsButton"), Qt::LeftButton);
        QCOMPARE(shown(), "");

        app.finish(2);
        app.press(Qt::Key_Return);
        QTest::mouseClick(app.find<QToolButton>("copyDetailsButton"), Qt::LeftButton);
        const QString copied = QApplication::clipboard()->text();
        QVERIFY2(copied.contains("Status: Finished") && copied.contains("Command line\nffmpeg "),
                 qPrintable(copied));
        app.job(app.list().currentIndex().row())->remove();
        QCOMPARE(shown(), "b.mkv");
        app.job(0)->remove();
        QCOMPARE(shown(), "");
    }

    void detailsThatAreReadStayWhereTheyAre() {
        Queued app({"a.mkv"});
        app.list().setFocus();
        app.select(0);
        app.press(Qt::Key_Return);
        auto* text = app.find<QTextEdit>("detailsText");
        auto* bar = text->verticalScrollBar();
        QVERIFY(text->find("German"));
        bar->setValue(bar->maximum() / 2);
        QVERIFY(bar->value() > 0);
        const auto lineAt = [&](int y) { return text->cursorForPosition({0, y}).block().text(); };
        const QStringList before{lineAt(0), lineAt(20), lineAt(40)};
        const QString first = text->document()->firstBlock().text();
        app.finish(1);
        QVERIFY(text->document()->firstBlock().text() != first);  // There are messages now.
        QCOMPARE(QStringList({lineAt(0), lineAt(20), lineAt(40)}), before);
        QCOMPARE(text->textCursor().selectedText(), "German");
        text->setFocus();
        QTest::keyClick(text, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), "German");
    }

    void detailsOnASmallScreen() {
        Queued app({"a.mkv", "b.mkv"});
        app.list().setFocus();
        app.select(1);
        app.press(Qt::Key_Return);
        app.window->resize(app.window->minimumSize());
        QCoreApplication::processEvents();
        const auto* pane = app.find<QWidget>("detailsPane");
        const QRect row = app.list().visualRect(app.list().currentIndex());
        QVERIFY(pane->isVisible() && app.list().viewport()->rect().contains(row));

        // The sheet needs the room of the list.
        QVERIFY(app.open({"c.mkv"}));
        QTRY_VERIFY(!app.list().isVisible());
        QVERIFY(pane->isVisible());
        QCOMPARE(app.window->size(), app.window->minimumSize());
        app.sheet().cancelAdd();
        QTRY_VERIFY(app.list().isVisible() && pane->isVisible());
    }

    void onlyTheHeightOfTheDetailsIsRemembered() {
        Queued app({"a.mkv"});
        app.select(0);
        app.press(Qt::Key_Return);
        auto* handle = app.find<QSplitter>("splitter")->handle(1);
        const auto* pane = app.find<QWidget>("detailsPane");
        const int before = pane->height();
        constexpr int kUp = 60;
        const QPoint place = handle->rect().center();
        QTest::mousePress(handle, Qt::LeftButton, {}, place);
        const QPoint target = place - QPoint(0, kUp);
        QMouseEvent move(QEvent::MouseMove, target, handle->mapToGlobal(target), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(handle, &move);
        QTest::mouseRelease(handle, Qt::LeftButton);
        QCOMPARE(pane->height(), before + kUp);
        MainWindow next(app.delegate);
        next.resize(app.window->size());
        next.show();
        const auto* nextPane = next.findChild<QWidget*>("detailsPane");
        QVERIFY(!nextPane->isVisible());
        auto* list = next.findChild<JobListView*>();
        list->setCurrentIndex(list->model()->index(0, 0));
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(nextPane->height(), before + kUp);
    }

    void aClickOnWhatIsSaidOfARowShowsItsDetails() {
        Queued app({"a.mkv", "b.mkv"});
        const QPoint note = app.layoutOf(0).note.topLeft() + QPoint(10, 5);
        const auto isShown = [&] {
            const auto* details = app.window->findChild<QWidget*>("detailsPane");
            return details && details->isVisible();
        };
        QTest::mouseClick(app.list().viewport(), Qt::LeftButton, {}, app.nameOf(0));
        QTest::mouseClick(app.list().viewport(), Qt::LeftButton, Qt::ControlModifier, note);
        QTest::mousePress(app.list().viewport(), Qt::LeftButton, {}, note);
        QTest::mouseRelease(app.list().viewport(), Qt::LeftButton, {}, note + QPoint(40, 0));
        QVERIFY(!isShown());
        QTest::mouseClick(app.list().viewport(), Qt::LeftButton, {}, note);
        QVERIFY(isShown());
    }

    void damageIsSeenInTheRow() {
        Queued app;
        Receipt receipt;
        receipt.verdict = ProofVerdict::Damaged;
        connect(&app.queue(), &JobQueue::jobAdded, [&](ConversionJob* job) { proveWith(*job, receipt); });
        app.add("a.mkv");
        receipt.verdict = ProofVerdict::Whole;
        app.add("b.mkv");
        app.finish(2);
        const QImage rows = app.list().viewport()->grab().toImage();
        const QRgb amber = colors::text(app.list().palette(), colors::Tone::Warning).rgb();
        QSet<int> signs;
        for (int y = 0; y < rows.height(); ++y) {
            for (int x = 0; x < app.layoutOf(0).name.left(); ++x) {
                if (rows.pixel(x, y) == amber) signs.insert(app.list().indexAt({x, y}).row());
            }
        }
        QCOMPARE(signs, QSet<int>{1});
    }

    void whatIsUnderWayHasABar() {
        Queued app({"a.mkv", "b.mkv"});
        const auto statesWithABar = [&] {
            const QImage rows = app.list().viewport()->grab().toImage();
            QList<JobState> states;
            for (int row = 0; row < app.queue().count(); ++row) {
                const QRgb middle = rows.pixel(app.layoutOf(row).bar.center());
                if (middle == colors::track(app.list().palette()).rgb()) states.append(app.job(row)->state());
            }
            return states;
        };
        QTRY_COMPARE(statesWithABar(), QList{JobState::Converting});
        app.find<QAction>("pauseContinueAction")->trigger();
        QTRY_COMPARE(statesWithABar(), QList{JobState::Paused});
        app.find<QAction>("pauseContinueAction")->trigger();
        app.finish(2);
        QTRY_VERIFY(statesWithABar().isEmpty());
    }

    void escapeLeavesTheMovieOut() {
        Queued app;
        QVERIFY(app.open({"a.mkv", "b.mkv", "c.mkv"}));
        QCOMPARE(app.find<QLabel>("waitingLabel")->text(), "2 more to come");
        QTest::keyClick(app.find<QPushButton>("addButton"), Qt::Key_Escape);
        QCOMPARE(app.sheet().waitingCount(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(app.isReady(), kPatience);
        QTest::mouseClick(app.find<QWidget>("cancelAllButton"), Qt::LeftButton);
        QVERIFY(!app.sheet().isShown());
        QCOMPARE(app.queue().count(), 0);
    }

    void onlyTheRowThatTicksIsRepainted() {
        Queued app({}, Queued::Begins::Paused);
        for (int i = 0; i < 500; ++i)
            app.add(QStringLiteral("%1.mkv").arg(i));
        app.job(2)->start();
        struct Painted : QObject {
            bool eventFilter(QObject*, QEvent* event) override {
                if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
                return false;
            }
            QRegion region;
        } painted;
        QCoreApplication::processEvents();
        app.window->repaint();
        QCoreApplication::processEvents();
        app.list().viewport()->installEventFilter(&painted);
        Q_EMIT app.queue().jobProgressed(app.job(2));
        QTRY_VERIFY(!painted.region.isEmpty());
        QCOMPARE(painted.region.boundingRect(), app.list().visualRect(app.list().model()->index(2, 0)));
        app.list().viewport()->removeEventFilter(&painted);
    }

    void theHelpMenuLeadsToItsPagesAndWindows() {
        WindowedApplication app;
        app.find<QAction>("supportAction")->trigger();
        QVERIFY(OpenedMail(app.desktop.opened.last()).subject.endsWith("Support Request"));
        auto* rate = app.find<QAction>("rateAction");
        app.delegate.increaseUsagesBy(10, 10, 20, {}, false, false);
        QVERIFY(!rate->isEnabled());
        app.delegate.increaseUsagesBy(1, 10, 20, {}, false, false);
        rate->trigger();
        QCOMPARE(app.desktop.opened.last().host(), "alternativeto.example");

        Q_EMIT app.delegate.fetchingUpdates(true);
        QVERIFY(QApplication::overrideCursor());
        Q_EMIT app.delegate.fetchingUpdates(false);
        QVERIFY(!QApplication::overrideCursor());

        app.find<QAction>("aboutAction")->trigger();
        app.find<QAction>("aboutAction")->trigger();
        QCOMPARE(app.window->findChildren<AboutWindow*>().size(), 1);
        const QPointer about = app.find<AboutWindow>("AboutWindow");
        QCOMPARE(about->findChild<QLabel*>("versionLabel")->text(), "Version: 1.0.0\nBuild: 1");
        QTRY_COMPARE(about->findChild<QLabel*>("toolLabel")->text(), "Tool: ffmpeg 5.1.9-fake of the system");
        QTest::mouseClick(about->findChild<QPushButton*>("copyButton"), Qt::LeftButton);
        QVERIFY(QApplication::clipboard()->text().startsWith("Ravelin 1.0.0 (1), "));
        QTest::keyClick(about, Qt::Key_Escape);
        QTRY_VERIFY(!about);
    }

    void fitsASmallScreenInBothDirections() {
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            QApplication::setLayoutDirection(direction);
            Queued app({"a.mkv"});
            QVERIFY(app.open({"b.mkv", "c.mkv"}));
            app.window->resize(app.window->minimumSize());
            QCoreApplication::processEvents();
            QVERIFY2(app.window->width() <= 640 && app.window->height() <= 420,
                     qPrintable(QDebug::toString(app.window->size())));
            const auto* cancel = app.find<QPushButton>("cancelButton");
            const auto* add = app.find<QPushButton>("addButton");
            QCOMPARE(cancel->x() < add->x(), direction == Qt::LeftToRight);
            QVERIFY(add->width() >= add->sizeHint().width());
        }
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }

    void theModelFollowsTheQueue() {
        WindowedApplication app;
        JobListModel model(app.queue());
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        app.tool.setConversion(FakeTool::waitFor(app.path("go")));
        app.add("a.mkv");
        setDefaultInt("InsertJobsAtBottom", 1);
        app.add("b.mkv");
        setDefaultInt("InsertJobsAtBottom", 0);
        app.add("c.mkv");
        for (int row = 0; row < 3; ++row)
            QCOMPARE(model.index(row).data(), QStringList({"c.mkv", "a.mkv", "b.mkv"})[row]);
        QCOMPARE(queueSummary(app.queue()), "1 converting, 2 queued");

        // The running job has moved down; its progress is reported for its row only.
        QSignalSpy changed(&model, &JobListModel::dataChanged);
        Q_EMIT app.queue().jobProgressed(app.job(1));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(changed.first().at(1).toModelIndex().row(), 1);
        app.job(0)->remove();
        Q_EMIT app.queue().jobProgressed(app.job(0));
        QCOMPARE(changed.last().at(0).toModelIndex().row(), 0);
        app.write("go");
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 2, 30000);
        app.queue().cleanClicked();
        QCOMPARE(model.rowCount(), 0);
    }

    void partsOfARowDoNotOverlap_data() {
        addRows<int, Qt::LayoutDirection, int>({{"narrow", 400, Qt::LeftToRight, 9},
                                                {"right to left", 640, Qt::RightToLeft, 9},
                                                {"large font", 640, Qt::LeftToRight, 22}});
    }
    void partsOfARowDoNotOverlap() {
        const auto [width, direction, points] = row<int, Qt::LayoutDirection, int>();
        QFont font = QApplication::font();
        font.setPointSize(points);
        const QRect row(0, 144, width, jobrow::height(font));
        QVERIFY(row.height() >= 72);
        for (const auto state :
             {JobState::Queued, JobState::Converting, JobState::Finished, JobState::Failed}) {
            for (const bool hasPoster : {false, true}) {
                const jobrow::Layout layout = jobrow::layout(
                    row, {.font = font, .state = state, .hasPoster = hasPoster, .direction = direction});
                QList<QRect> parts{hasPoster ? layout.poster : layout.icon, layout.name, layout.status,
                                   layout.bar, layout.percent};
                for (const auto& [button, rect] : layout.buttons)
                    parts.append(rect);
                for (qsizetype i = 0; i < parts.size(); ++i) {
                    QVERIFY(parts[i].isEmpty() || row.contains(parts[i]));
                    for (qsizetype j = i + 1; j < parts.size(); ++j)
                        QVERIFY(!parts[i].intersects(parts[j]));
                }
                QVERIFY(!hasPoster || row.contains(layout.badge));
                QCOMPARE(parts.first().x() < layout.buttons.last().rect.x(), direction == Qt::LeftToRight);
            }
        }
    }

    void tickingDigitsPushNothingAside() {
        constexpr int kDigit = 40;
        const auto drawn = [](const QString& text, const QRect& part) {
            QImage image(300, 30, QImage::Format_Mono);
            image.fill(1);
            QPainter painter(&image);
            drawWithDigitsOf(kDigit, painter, image.rect(), text);
            return image.copy(part);
        };
        const QRect rest(2 * kDigit, 0, 220, 30);
        QCOMPARE(drawn("19: in 8", rest), drawn("01: in 8", rest));
        for (const char* other : {"19: in 9", "19: on 8"})
            QVERIFY(drawn("19: in 8", rest) != drawn(other, rest));
        QVERIFY(drawn("1", QRect(0, 0, kDigit, 30)) != drawn("2", QRect(0, 0, kDigit, 30)));
    }

    void whatTheLastSessionLeftIsOffered_data() {
        addRows<QString, bool, int>(
            {{"continued by keyboard", "continueButton", true, 3}, {"forgotten", "forgetButton", false, 0}});
    }
    void whatTheLastSessionLeftIsOffered() {
        const auto [name, byKeyboard, count] = row<QString, bool, int>();
        Queued app({"a.mkv", "b.mkv", "c.mkv"}, Queued::Begins::Paused);
        QVERIFY(!app.find<QWidget>("lastQueueBar")->isVisible());
        app.delegate.terminate(false);
        app.window->hide();

        AppDelegate next(app.panels);
        MainWindow window(next);
        next.applicationWillFinishLaunching();
        window.show();
        window.activateWindow();
        const auto* bar = window.findChild<QWidget*>("lastQueueBar");
        QVERIFY(!bar->isVisible());
        next.openFirstFiles({});
        QTRY_VERIFY(bar->isVisible());
        QVERIFY(bar->accessibleName().startsWith("3 movie"));
        auto* button = bar->findChild<QPushButton*>(name);
        QCOMPARE(button->accessibleDescription(), bar->accessibleName());
        QCOMPARE(next.queue().count(), 0);
        if (byKeyboard) {
            constexpr int kManyWidgets = 30;
            for (int i = 0; i < kManyWidgets && window.focusWidget() != button; ++i)
                QTest::keyClick(window.focusWidget() ? window.focusWidget() : &window, Qt::Key_Tab);
            QCOMPARE(window.focusWidget(), button);
            QTest::keyClick(button, Qt::Key_Return);
        } else {
            QTest::mouseClick(button, Qt::LeftButton);
        }
        QVERIFY(!bar->isVisible());
        QTRY_VERIFY(!next.lastQueue().isReturning());
        QCOMPARE(next.queue().count(), count);
        if (count > 0) QCOMPARE(next.queue().job(0)->fileInfo().fileName, "a.mkv");
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_MainWindow.moc"
