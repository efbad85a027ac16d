#pragma once

#include "app/AppDelegate.h"
#include "fakes/FakeTool.h"
#include "fakes/RecordingPanels.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"

/// The whole application without its windows.
class LaunchedApplication : public TestHome {
public:
    static constexpr int kNextToSource = 1;

    enum class Starts { Now, Later };
    explicit LaunchedApplication(Starts starts = Starts::Now) : tool(path()), delegate(panels) {
        AppDelegate::initialize();
        QObject::connect(&delegate, &AppDelegate::statusMessage, [this](const auto& text) { status = text; });
        if (starts == Starts::Now) delegate.applicationWillFinishLaunching();
    }

    AddSheet& sheet() { return delegate.addSheet(); }
    JobQueue& queue() { return delegate.queue(); }
    DestinationPopUp& popUp() { return delegate.destinations().destinationPopUp(); }
    bool isReady() { return sheet().isShown() && !sheet().informationString().isEmpty(); }
    /// Outputs are written next to their movies.
    void putOutputsNextToSource() {
        delegate.destinations().addOpenedFolder(path());
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
    }
    /// Outputs are written to this folder, named "out", from the launch on.
    void storeFolder(const QString& name) const {
        setDefaultArray(kDestinationBookmarksKey, QVariantList{path(name).toUtf8()});
        setDefaultArray(kDestinationNamesKey, QVariantList{"out"});
        setDefaultInt(kHasUpgradedFromPre13Key, 1);
        setDefaultInt(kDefaultDestinationKey, DestinationPopUp::kFirstFolder);
    }
    /// Opens movies; the last one is then on the sheet.
    bool open(const QStringList& names) {
        QStringList paths;
        for (const QString& name : names)
            paths.append(write(name));
        delegate.openFiles(paths);
        return QTest::qWaitFor([this] { return isReady(); }, 60000);
    }
    /// Opens a movie and confirms it.
    bool confirm(const QString& name) {
        const bool isOpen = open({name});
        sheet().addToQueue();
        return isOpen;
    }
    void saveAs(const QString& path) {
        panels.savedAs = path;
        sheet().addToQueue();
    }
    QString outputOf(qsizetype job) { return queue().job(job)->fileInfo().destinationURL.toLocalFile(); }

    FakeTool tool;
    RecordingPanels panels;
    AppDelegate delegate;
    QString status;
};
