#pragma once

#include "app/AppDelegate.h"
#include "fakes/FakeTool.h"
#include "fakes/RecordingPanels.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/store/Defaults.h"
#include "ui/window/JobDelegate.h"
#include "ui/window/JobListView.h"
#include "ui/window/MainWindow.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

/// The application with its main window, a scripted tool, and recorded alerts and panels. Movies are written
/// to the stored folder "out".
class WindowedApplication : public TestHome {
public:
    WindowedApplication() : tool(path()), delegate(panels) {
        AppDelegate::initialize();
        QDir(path()).mkpath("out");
        setDefaultArray(kDestinationBookmarksKey, QVariantList{path("out").toUtf8()});
        setDefaultArray(kDestinationNamesKey, QVariantList{"out"});
        setDefaultInt(kHasUpgradedFromPre13Key, 1);
        setDefaultInt(kDefaultDestinationKey, DestinationPopUp::kFirstFolder);
        window = std::make_unique<MainWindow>(delegate);
        delegate.applicationWillFinishLaunching();
        window->show();
        window->activateWindow();
    }

    template <typename Widget>
    Widget* find(const char* name) const {
        return window->findChild<Widget*>(name);
    }
    JobListView& list() const { return *find<JobListView>("jobListView"); }
    JobQueue& queue() { return delegate.queue(); }
    ConversionJob* job(qsizetype row) { return queue().job(row); }
    bool sheetIsReady() { return !delegate.addSheet().informationString().isEmpty(); }

    /// Queues a movie without the sheet.
    ConversionJob* add(const QString& name) {
        MKVFileInfo info;
        info.fileName = name;
        info.runtimeSeconds = 10;
        info.videoTrackCodec = "h264";
        info.audioTrackInformation = {AudioEntry::make(1, "eng", "ac3", false, 48000),
                                      AudioEntry::make(2, "ger", "dts", true, 48000)};
        info.fileURL = QUrl::fromLocalFile(write(name));
        info.destinationURL = QUrl::fromLocalFile(path("out/" + name + ".mp4"));
        auto job = std::make_unique<ConversionJob>(queue(), std::move(info), 0);
        ConversionJob* added = job.get();
        if (!queue().addJob(std::move(job))) qFatal("%s cannot be queued", qPrintable(name));
        return added;
    }

    /// Chooses a command from the menu bar of `owner` with the mouse.
    static void choose(const QWidget& owner, const char* menuName, const char* actionName) {
        auto* bar = owner.findChild<QMenuBar*>();
        auto* menu = owner.findChild<QMenu*>(menuName);
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(menu->menuAction()).center());
        QVERIFY(QTest::qWaitForWindowExposed(menu));
        auto* action = owner.findChild<QAction*>(actionName);
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
    }
    QPoint centreOf(int row, jobrow::Button button) const {
        QStyleOptionViewItem option;
        option.initFrom(&list());
        option.rect = list().visualRect(list().model()->index(row, 0));
        return JobDelegate::layoutOf(option).rectOf(button).center();
    }
    void click(int row, jobrow::Button button, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, modifiers, centreOf(row, button));
    }

    FakeTool tool;
    RecordingPanels panels;
    AppDelegate delegate;
    std::unique_ptr<MainWindow> window;
};
