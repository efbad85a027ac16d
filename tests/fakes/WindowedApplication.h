#pragma once

#include "fakes/LaunchedApplication.h"
#include "ui/window/JobDelegate.h"
#include "ui/window/JobListView.h"
#include "ui/window/MainWindow.h"

#include <QtWidgets>

/// The application with its main window, a scripted tool, and recorded alerts and panels. Movies are written
/// to the stored folder "out".
class WindowedApplication : public LaunchedApplication {
public:
    WindowedApplication() : LaunchedApplication(Starts::Later) {
        QDir(path()).mkpath("out");
        storeFolder("out");
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
    ConversionJob* job(qsizetype row) { return queue().job(row); }

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

    jobrow::Layout layoutOf(int row) const {
        QStyleOptionViewItem option;
        option.initFrom(&list());
        const QModelIndex index = list().model()->index(row, 0);
        option.rect = list().visualRect(index);
        return JobDelegate::layoutOf(option, index);
    }
    QPoint centreOf(int row, jobrow::Button button) const { return layoutOf(row).rectOf(button).center(); }
    void click(int row, jobrow::Button button, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, modifiers, centreOf(row, button));
    }

    std::unique_ptr<MainWindow> window;
};
