// Puts the windows into every relevant state and saves a screenshot of each: screenshots FOLDER [--dark]
#include "documentation/window/Documentation.h"
#include "documentation/window/WebEngine.h"
#include "fakes/InstantProof.h"
#include "fakes/WindowedApplication.h"
#include "feedback/PXRatingWindowController.h"
#include "feedback/UpdateCheck.h"
#include "support/alerts/Alert.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/reports/Mail.h"
#include "ui/dialogs/DialogPresenter.h"
#include "ui/help/AboutWindow.h"
#include "ui/help/RatingWindow.h"
#include "ui/look/Appearance.h"
#include "ui/look/Icons.h"
#include "ui/preferences/PreferencesWindow.h"
#include "ui/widgets/WindowMenu.h"
#include "ui/window/EmptyView.h"
#include "ui/window/JobDrag.h"
#include "ui/window/JobListModel.h"
#include "ui/window/PosterFrame.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include <unistd.h>

namespace {

/// The name of a movie decides whether it converts forever, fails, or finishes at once.
constexpr const char* kConversion = R"sh(
echo movie > "$destination"
case "$destination" in
*Night*) echo "No space left on device" >&2; exit 1 ;;
*Lisbon*|*Winter*) printf 'out_time_ms=6400000\n' > "$progress"; while :; do sleep 0.1; done ;;
esac
)sh";

/// A movie with more than an MP4 can hold.
constexpr const char* kManyStreams = R"(
    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 448 kb/s (default)
    Stream #0:2(ger): Audio: dts (DTS), 48000 Hz, 5.1(side), fltp, 1536 kb/s
    Stream #0:3(eng): Audio: ac3, 48000 Hz, stereo, fltp, 192 kb/s
    Metadata:
      title           : Director's commentary
    Stream #0:4(eng): Subtitle: hdmv_pgs_subtitle
    Stream #0:5(ger): Subtitle: hdmv_pgs_subtitle
    Stream #0:6(eng): Subtitle: subrip
)";

QString folder;

void save(QWidget& widget, const QString& name) {
    if (!QTest::qWaitForWindowExposed(&widget)) qFatal("%s is not shown", qPrintable(name));
    QCoreApplication::processEvents();
    if (!widget.grab().save(folder + u'/' + name + ".png")) qFatal("cannot save %s", qPrintable(name));
}

void waitUntil(const std::function<bool()>& condition) {
    if (!QTest::qWaitFor(condition, 20000)) qFatal("a state was not reached");
}

bool sheetIsWhole(const WindowedApplication& app) {
    const auto* sheet = app.find<QWidget>("addSheetView");
    return sheet->height() > 1 &&
           sheet->findChild<QVariantAnimation*>()->state() == QAbstractAnimation::Stopped;
}

void waitForSheet(WindowedApplication& app) {
    waitUntil([&] { return app.isReady() && sheetIsWhole(app); });
}

void emptyWindow() {
    const WindowedApplication app;
    save(*app.window, "empty");
    app.find<EmptyView>("emptyView")->setDropHighlighted(true);
    save(*app.window, "empty-drop");
}

/// A landscape for the scripted tool to take as the movie's picture.
void writePoster(const WindowedApplication& app, const QString& movie) {
    const double scale = app.window->devicePixelRatioF();
    QImage picture((QSizeF(PosterFrame::kSize) * scale).toSize(), QImage::Format_RGB888);
    const auto hue = static_cast<int>(qHash(movie, 0) % 360);
    const auto shade = [hue](int turn, int value) { return QColor::fromHsv((hue + turn) % 360, 120, value); };
    picture.fill(shade(40, 190));
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double width = picture.width();
    const double height = picture.height();
    painter.setBrush(shade(20, 140));
    painter.drawEllipse(QRectF(0.3 * width, 0.45 * height, 1.1 * width, height));
    painter.setBrush(shade(0, 90));
    painter.drawEllipse(QRectF(-0.3 * width, 0.65 * height, 1.2 * width, height));
    painter.end();
    QFile pixels(app.path(movie + ".rgb"));
    if (!pixels.open(QIODevice::WriteOnly)) qFatal("cannot write");
    for (int y = 0; y < picture.height(); ++y)
        pixels.write(reinterpret_cast<const char*>(picture.constScanLine(y)), 3 * picture.width());
}

void showPosters(bool areShown) {
    standardUserDefaults().setOverride(kShowPostersKey, qint64{areShown});
    setDefaultInt(kShowPostersKey, areShown ? 1 : 0);
}

bool havePosters(const WindowedApplication& app) {
    const QAbstractItemModel& model = *app.list().model();
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row, 0);
        const bool isSeen = app.list().visualRect(index).intersects(app.list().viewport()->rect());
        if (isSeen && index.data(JobListModel::PosterRole).value<QPixmap>().isNull()) return false;
    }
    return true;
}

void addQueue(WindowedApplication& app) {
    showPosters(true);
    setDefaultInt("InsertJobsAtBottom", 1);
    setDefaultInt(kConcurrentJobsKey, 1);
    setDefaultInt(kConcurrentJobCountKey, 1);
    app.tool.setConversion(kConversion);
    for (const char* name : {"The Long Way to Lisbon (2019).mkv", "Winter Light - Director's Cut.mkv",
                             "A Night at the Lighthouse.mkv", "Harbour Stories S01E01.mkv",
                             "An Unreasonably Long Title That Somebody Gave to a Movie Because the Tape Said "
                             "So - Part One of Three "
                             "(Remastered, Extended, 1080p, Two Commentaries).mkv",
                             "Gräfin Mathildes Schiffahrtsgesellschaftsabenteuer.mkv"}) {
        writePoster(app, name);
        app.add(name);
    }
    waitUntil([&] { return app.queue().jobCountWithState(JobState::Finished) == 3; });
    waitUntil([&] { return app.job(0)->progress() > 60 && app.job(1)->progress() > 60; });
    app.queue().pauseContinueClicked(true);
    writePoster(app, "Still Waiting.mkv");
    app.add("Still Waiting.mkv");
    app.queue().pauseContinueClicked(false);
    app.job(0)->continueJob();
    app.list().setCurrentIndex(app.list().model()->index(0, 0));
    app.window->resize(760, 640);
    waitUntil([&] { return havePosters(app); });
}

ReceiptTrack receiptTrack(StreamKind kind, const QString& codec, quint64 count, quint64 sourceCount) {
    ReceiptTrack track;
    track.plan.kind = kind;
    track.plan.codec = codec;
    track.plan.action = PlannedTrack::Action::Copied;
    track.count = count;
    track.sourceCount = sourceCount;
    return track;
}

/// What the proof of these movies would find.
void addReceipts(WindowedApplication& app) {
    constexpr qint64 kBytes = 1503238553;
    Receipt whole;
    whole.verdict = ProofVerdict::Whole;
    whole.outputBytes = kBytes;
    whole.tracks = {receiptTrack(StreamKind::Video, "h264", 68211, 68211),
                    receiptTrack(StreamKind::Audio, "ac3", 88817, 88817)};
    Receipt damaged;
    damaged.verdict = ProofVerdict::Damaged;
    damaged.outputBytes = kBytes;
    damaged.tracks = {receiptTrack(StreamKind::Video, "h264", 68197, 68211)};
    damaged.damage = {{.from = 751, .to = 751.6, .what = "14 pictures are missing"}};
    Receipt unknown;
    unknown.notes = {"the source counts no pictures"};
    QObject::connect(&app.queue(), &JobQueue::jobAdded, [=](ConversionJob* job) {
        const QString& name = job->fileInfo().fileName;
        proveWith(*job, name.startsWith("Harbour") ? whole : name.startsWith("An Unr") ? damaged : unknown);
    });
}

void saveMenu(const WindowedApplication& app, const QString& name) {
    QMenu menu(app.window.get());
    app.list().fillMenu(menu);
    menu.popup(app.window->mapToGlobal(QPoint(200, 120)));
    save(menu, name);
    menu.close();
}

/// A row that is dragged to another place, and the way back to what runs.
void longQueue() {
    WindowedApplication app;
    showPosters(false);
    setDefaultInt("InsertJobsAtBottom", 1);
    app.tool.setConversion(kConversion);
    app.add("Winter Light - Director's Cut.mkv");
    for (int episode = 1; episode <= 12; ++episode)
        app.add(QStringLiteral("Harbour Stories S01E%1.mkv").arg(episode, 2, 10, QLatin1Char('0')));
    app.list().setCurrentIndex(app.list().model()->index(3, 0));
    const auto data = jobdrag::dataOf({app.job(3)});
    const QPoint place = app.layoutOf(5).name.topLeft();
    QDragEnterEvent enter(place, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(app.list().viewport(), &enter);
    save(*app.window, "moved-row");
    QDragLeaveEvent leave;
    QApplication::sendEvent(app.list().viewport(), &leave);
    QTest::keyClick(&app.list(), Qt::Key_End);
    waitUntil([&] { return app.find<QPushButton>("showRunningButton")->isVisible(); });
    save(*app.window, "show-running");
    if (!jobdrag::picture({app.job(3), app.job(4)}, app.list()).save(folder + "/dragged.png"))
        qFatal("cannot save");
}

void queueWindow() {
    WindowedApplication app;
    addReceipts(app);
    addQueue(app);
    app.window->resize(760, 640);
    save(*app.window, "queue");
    for (const auto& [row, state] :
         {std::pair(0, "converting"), {2, "failed"}, {3, "whole"}, {4, "damaged"}, {6, "queued"}}) {
        Q_EMIT app.list().detailsRequested(app.job(row));
        save(*app.window, QStringLiteral("details-") + state);
    }
    Q_EMIT app.list().detailsRequested(app.job(4));
    app.window->resize(640, 420);
    save(*app.window, "details-small");
    QTest::keyClick(&app.list(), Qt::Key_Tab);
    save(*app.window, "details-focused");
    QTest::keyClick(app.find<QTextEdit>("detailsText"), Qt::Key_Escape);
    app.list().setCurrentIndex(app.list().model()->index(0, 0));
    app.window->resize(760, 640);
    saveMenu(app, "job-menu");
    app.list().selectAll();
    save(*app.window, "several-selected");
    saveMenu(app, "several-menu");
    app.list().setCurrentIndex(app.list().model()->index(0, 0));
    app.window->resize(640, 420);
    save(*app.window, "queue-small");
    app.tool.setReport(FakeTool::report(kManyStreams));
    writePoster(app, "Third Act (2021).mkv");
    app.delegate.openFiles({app.write("Sunday Matinee With a Name of Some Length (1968).mkv"),
                            app.write("Another One.mkv"), app.write("Third Act (2021).mkv"),
                            app.write("Third Act (2021).srt")});
    app.window->resize(760, 640);
    waitForSheet(app);
    waitUntil([&] { return !app.find<PosterFrame>("posterFrame")->poster().isNull(); });
    save(*app.window, "add-sheet");
    app.find<QPushButton>("whyButton")->click();
    save(*app.find<QWidget>("leftOutPopup"), "left-out");
    app.find<QWidget>("leftOutPopup")->close();
    auto* audio = app.find<QComboBox>("audioPopUp");
    audio->showPopup();
    save(*audio->view()->window(), "audio-tracks");
    audio->hidePopup();
    app.window->resize(640, 420);
    save(*app.window, "add-sheet-small");
    app.sheet().cancelAll();
    waitUntil([&] { return !app.sheet().isShown(); });
    app.write("out/Harbour Stories S01E02.mp4");
    for (const char* name : {"S01E01", "S01E02"})
        app.write(QString("Harbour Stories/Season 1/Harbour Stories %1.mkv").arg(name));
    app.delegate.openFiles({app.path("Harbour Stories")});
    waitForSheet(app);
    save(*app.window, "add-all-small");
    app.window->resize(760, 640);
    save(*app.window, "add-all");
    app.window->resize(640, 420);
    app.queue().removeJobs({app.job(4)});
    save(*app.window, "undo");
    app.delegate.removals().undo();
    app.queue().pauseContinueClicked(true);
    save(*app.window, "paused");
}

/// A movie with more tracks than an MP4 can hold, before and after its conversion.
void details() {
    WindowedApplication app;
    showPosters(true);
    writePoster(app, "Harbour Stories S01E01.mkv");
    app.tool.setReport(FakeTool::report(kManyStreams));
    app.tool.setConversion(FakeTool::waitFor(app.path("go")) + "echo '[mp4 @ 0x5581] a warning' >&2\n");
    Receipt receipt;
    receipt.verdict = ProofVerdict::Damaged;
    receipt.tracks = {receiptTrack(StreamKind::Video, "h264", 68197, 68211),
                      receiptTrack(StreamKind::Audio, "ac3", 88817, 88817)};
    receipt.damage = {{.from = 751, .to = 751.6, .what = "14 pictures are missing"},
                      {.from = 3000, .to = 3012, .what = "the sound is silent"}};
    receipt.notes = {"The file that was there before is kept as Harbour Stories 1.mp4."};
    receipt.outputBytes = 1518338048;
    QObject::connect(&app.queue(), &JobQueue::jobAdded,
                     [=](ConversionJob* job) { proveWith(*job, receipt); });
    app.delegate.openFiles(
        {app.write("Harbour Stories S01E01.mkv"), app.write("Harbour Stories S01E01.srt")});
    waitForSheet(app);
    app.sheet().addToQueue();
    waitUntil([&] { return app.queue().count() == 1 && !app.find<QWidget>("addSheetView")->isVisible(); });
    app.window->resize(760, 640);
    app.list().setFocus();
    app.list().setCurrentIndex(app.list().model()->index(0, 0));
    QTest::keyClick(&app.list(), Qt::Key_Return);
    save(*app.window, "details-tracks");
    app.write("go");
    waitUntil([&] { return app.queue().jobCountWithState(JobState::Finished) == 1; });
    save(*app.window, "details-receipt");
    auto* text = app.find<QTextEdit>("detailsText");
    text->verticalScrollBar()->setValue(text->verticalScrollBar()->maximum());
    save(*app.window, "details-end");
}

/// What a session leaves, offered by the next one.
void lastQueue() {
    WindowedApplication app;
    app.queue().pauseContinueClicked(true);
    for (const char* name : {"Winter Light - Director's Cut.mkv", "The Long Way to Lisbon (2019).mkv"})
        app.add(name);
    app.delegate.terminate(false);
    AppDelegate next(app.panels);
    MainWindow window(next);
    next.applicationWillFinishLaunching();
    window.show();
    next.openFirstFiles({});
    save(window, "last-queue-empty");
    next.queue().pauseContinueClicked(true);
    app.window->hide();
    setDefaultInt(kAutoAddKey, 1);
    next.openFiles({app.write("Harbour Stories S01E01.mkv")});
    waitUntil([&] { return next.queue().count() == 1 && !next.addSheet().isShown(); });
    save(window, "last-queue");
}

/// The choice of what follows the queue, and its countdown.
void endOfQueue() {
    WindowedApplication app;
    auto& menu = *app.find<QMenu>("queueMenu");
    menu.popup(app.window->mapToGlobal(QPoint(60, 30)));
    auto& choices = *app.find<QMenu>("endActionMenu");
    choices.popup(menu.geometry().topRight());
    save(menu, "queue-menu");
    save(choices, "end-action-menu");
    choices.close();
    menu.close();
    app.find<QAction>("endSleepAction")->trigger();
    app.add("Harbour Stories S01E01.mkv");
    waitUntil([&] { return app.delegate.endAction().secondsLeft().has_value(); });
    save(*app.window, "end-action");
}

void scanningWindow() {
    WindowedApplication app;
    app.tool.setReport("");
    QFile::remove(app.path("resources/ffmpeg"));
    app.write("resources/ffmpeg", "#!/bin/sh\nsleep 3\n");
    QFile::setPermissions(app.path("resources/ffmpeg"), QFile::ReadOwner | QFile::ExeOwner);
    app.delegate.openFiles({app.write("The Long Way to Lisbon (2019).mkv")});
    waitUntil([&] { return sheetIsWhole(app); });
    save(*app.window, "scanning");
}

void rightToLeft() {
    QApplication::setLayoutDirection(Qt::RightToLeft);
    WindowedApplication app;
    addQueue(app);
    app.delegate.openFiles({app.write("Sunday Matinee.mkv"), app.write("Second.mkv")});
    waitForSheet(app);
    save(*app.window, "right-to-left");
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

void largeFont() {
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(usual.pointSizeF() * 1.7);
    QApplication::setFont(large);
    WindowedApplication app;
    addReceipts(app);
    addQueue(app);
    app.tool.setReport(FakeTool::report(kManyStreams));
    app.delegate.openFiles({app.write("Third Act (2021).mkv"), app.write("Third Act (2021).srt")});
    waitForSheet(app);
    app.window->resize(960, 760);
    save(*app.window, "large-font");
    QApplication::setFont(usual);
}

void preferences() {
    WindowedApplication app;
    const auto choose = [&app](const QString& name) {
        QDir(app.path()).mkpath(name);
        app.panels.folder = app.path(name);
    };
    for (const char* name :
         {"Films", "Series/Season 1", "A disk with a very long name/and a folder in it/Movies"}) {
        choose(name);
        app.delegate.destinations().chooseNewDestination(DestinationPopUp::Place::Preferences);
    }
    app.delegate.destinations().renameFolder(2, "Series for the living room on the first floor");
    choose("Downloads/complete/a folder with a long name/and another one with a longer name/movies");
    app.delegate.watchFolder().watchfolderSetClicked();
    app.window->openPreferences();
    PreferencesWindow& window = *app.window->preferencesWindow();
    auto* folders = window.findChild<QTreeWidget*>();
    folders->setCurrentItem(folders->topLevelItem(1));
    auto* pages = window.findChild<QListWidget*>();
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentRow(page);
        const QString name = "preferences-" + pages->item(page)->text().toLower().replace(' ', '-');
        if (!pages->item(page)->text().contains("Audio")) {
            save(window, name);
            auto* area =
                window.findChild<QStackedWidget*>("pages")->currentWidget()->findChild<QScrollArea*>();
            if (area->verticalScrollBar()->maximum() == 0) continue;
            area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
            save(window, name + "-end");
            continue;
        }
        for (int style = 0; style <= 2; ++style) {
            setDefaultInt(kConversionPresetKey, style);
            window.refresh();
            save(window, name + QString::number(style));
        }
    }
}

void rating() {
    const TestHome home;
    PXRatingWindowController controller;
    controller.setIntroText(
        "You have now used Ravelin more than 20 times, successfully converting 31 MKVs to MP4s.");
    RatingWindow* window = new RatingWindow(controller);
    window->show();
    save(*window, "rating");
    controller.happyClicked();
    save(*window, "rating-happy");
    controller.problemsClicked();
    save(*window, "rating-problem");
    delete window;
}

void about() {
    const WindowedApplication app;
    QFile::link(QCoreApplication::applicationDirPath() + "/../resources/documents",
                app.path("resources/documents"));
    app.window->findChild<QAction*>("aboutAction")->trigger();
    auto& window = *app.window->findChild<AboutWindow*>();
    static_cast<void>(
        QTest::qWaitFor([&] { return window.findChild<QLabel*>("toolLabel")->text().contains("5.1.9"); }));
    save(window, "about");
    QMenu& help = *app.window->findChild<QMenu*>("helpMenu");
    help.popup(app.window->mapToGlobal(QPoint(200, 120)));
    save(help, "help-menu");
    help.close();
}

/// The real pages of the build, in the real engine.
void documentationWindow() {
    WindowedApplication app;
    qputenv("RAVELIN_RESOURCES", (QCoreApplication::applicationDirPath() + "/../resources").toUtf8());
    PluginWebEngine engine;
    if (const QString why = engine.obstacle(); !why.isEmpty()) {
        qWarning("no pictures of the documentation: %s", qPrintable(why));
        return;
    }
    const Documentation documentation(app.delegate, engine, {symbolicIcon("job-remove"), addWindowMenu});
    constexpr int kMillisecondsToDraw = 700;  // The engine does not report when it has drawn.
    for (int page = 0; page < documentation::pages().size(); ++page) {
        app.delegate.openDocumentationWindow(page);
        QTest::qWait(kMillisecondsToDraw);
        save(*documentation.documentationWindow(), "documentation-" + QString::number(page + 1));
    }
    app.delegate.openDocumentationWindow(0);
    QTest::keyClick(documentation.documentationWindow(), Qt::Key_F, Qt::ControlModifier);
    documentation.documentationWindow()->findChild<QLineEdit*>()->setText("movie");
    QTest::qWait(kMillisecondsToDraw);
    save(*documentation.documentationWindow(), "documentation-find");
}

/// A question, and the name of its screenshot.
void alertOf(const QString& name, const std::function<void()>& ask) {
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog) return;
        watch.stop();
        save(*dialog, name);
        dialog->reject();
    });
    watch.start(10);
    ask();
}

void alerts() {
    const WindowedApplication app;
    DialogPresenter presenter;
    presenter.setMainWindow(app.window.get());
    setAlertPresenter(&presenter);
    alertOf("alert-quit", [] {
        alert_apptitled("Conversion is in progresss. Are you sure you want to quit?", "Quit",
                        AlertButton::cancellingByDefault("Cancel"));
    });
    alertOf("alert-moved", [] {
        alert_apptitled(
            "Ravelin has been moved, but applications should never be moved while they are running.",
            "Restart Ravelin");
    });
    alertOf("alert-update", [] {
        checkForUpdates([](const QUrl& url) {
            return download::Page{.url = url,
                                  .body =
                                      "<enclosure sparkle:version=\"27\" "
                                      "sparkle:shortVersionString=\"1.2\"/>",
                                  .isAbandoned = false};
        });
    });
    alertOf("alert-mail", [] {
        const QString words = "Hello\nConversion of a file failed.\n\nBye\n\nP.S. Details: ";
        mail::open(mail::withSettings("support@ravelin.example", "Ravelin v1.0.0 Problem Report",
                                      [&](const QString& settings) { return words + settings; }));
    });
    const auto failure = [](const failure::Facts& facts) {
        alert_described(FailureActions::offerFor(failure::explain(facts), "Holiday.mkv").alert);
    };
    alertOf("alert-failed", [&] { failure({RunEnding::of(RunEnding::Kind::NoSpace), {}, {}}); });
    alertOf("alert-subtitles", [&] {
        failure({RunEnding::of(RunEnding::Kind::ToolFailed), {}, {}, true, true});
    });
    alertOf("alert-long", [] {
        alert("Information", QString("Command-output: something went wrong here. ").repeated(60),
              "Send to support", "Cancel");
    });
    QString text = "Holiday";
    alertOf("alert-input", [&] { alert_input("What is it called?", {"OK", "Cancel"}, text); });
    bool state = true;
    alertOf("alert-checkbox", [&] {
        alert_checkbox("Clean up", "Finished movies leave the list.", {"OK", "Cancel"}, "Failed ones, too",
                       state);
    });
    QString color = "#4a90d9";
    alertOf("alert-color", [&] { alert_colorwell("Which colour?", {"OK", "Cancel"}, color); });
    alertOf("alert-text", [&] { alert_inputtext("What happened?", {"Send", "Cancel"}, text); });
    qsizetype index = 0;
    alertOf("alert-popup", [&] {
        alert_selection_popup("Which track?", {"OK", "Cancel"}, {"#1: eng (ac3)", "#2: ger (dts) [5.1]"},
                              index);
    });
    alertOf("alert-matrix", [&] {
        alert_selection_matrix("Which track?", {"OK", "Cancel"}, {"#1: eng (ac3)", "#2: ger (dts) [5.1]"},
                               index);
    });
    alertOf("alert-silence", [] {
        alert_dontwarnagain_version("demo", "Surround sound", "The movie has more than one audio track.",
                                    "OK", "Don't tell me again");
    });
    Alert notice;
    notice.title = "Picking up Speed!";
    notice.message =
        "Note that conversion will be much faster, more reliable and higher quality if you select "
        "'High Speed & Quality' in the 'Audio Conversion Settings' in the Preferences.";
    notice.icon = "ok.png";
    notice.buttons = {AlertButton::cancelling("OK"), "Show the Preference"};
    alertOf("alert-notice", [&] { presenter.present(notice); });
    alert_nonmodal_checkbox("All done", "Ten movies were converted. They are where you wanted them.", "OK",
                            "Tell me each time", [](bool) {});
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget != app.window.get()) save(*widget, "panel");
    }
    setAlertPresenter(nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    if (::geteuid() == 0) qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addOption(QCommandLineOption("dark"));
    parser.process(application);
    folder = parser.positionalArguments().value(0, ".");
    QDir().mkpath(folder);
    useVisibleIndicators();
    useDarkPalette(parser.isSet("dark"));
    emptyWindow();
    queueWindow();
    details();
    longQueue();
    lastQueue();
    endOfQueue();
    scanningWindow();
    rightToLeft();
    largeFont();
    preferences();
    rating();
    about();
    documentationWindow();
    alerts();
    return 0;
}
