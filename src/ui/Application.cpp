#include "ui/Application.h"

#include "app/AppDelegate.h"
#include "convert/RunJournal.h"
#include "documentation/window/Documentation.h"
#include "documentation/window/WebEngine.h"
#include "feedback/PXRatingWindowController.h"
#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"
#include "support/base/Translations.h"
#include "support/desktop/SingleInstance.h"
#include "support/processes/Interruption.h"
#include "support/reports/CrashLogs.h"
#include "support/store/Defaults.h"
#include "support/store/LogRings.h"
#include "ui/WindowDesktop.h"
#include "ui/dialogs/DialogPanels.h"
#include "ui/dialogs/DialogPresenter.h"
#include "ui/help/QuietMoment.h"
#include "ui/help/RatingWindow.h"
#include "ui/look/Appearance.h"
#include "ui/look/Icons.h"
#include "ui/widgets/WindowMenu.h"
#include "ui/window/MainWindow.h"
#include "ui/window/WindowWatch.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QEventLoop>
#include <QPointer>
#include <QSessionManager>
#include <QTimer>

#include <optional>

namespace {

/// The files and folders of the command line: absolute paths, or "file://" URLs.
QStringList pathsOf(const QStringList& arguments) {
    QStringList paths;
    for (const QString& argument : arguments) {
        const QUrl url(argument);
        paths.append(url.isLocalFile() ? url.toLocalFile() : QDir().absoluteFilePath(argument));
    }
    return paths;
}

QStringList parseCommandLine() {
    QCommandLineParser parser;
    parser.setApplicationDescription(Texts::tr("Puts movies into MP4 without re-encoding the picture."));
    parser.addHelpOption();
    parser.addVersionOption();
    // Desktops add it when they start the application by D-Bus.
    QCommandLineOption asService("gapplication-service");
    asService.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(asService);
    parser.addPositionalArgument("files", Texts::tr("Movies, subtitle files, folders."), "[files...]");
    parser.process(QApplication::arguments());
    return pathsOf(parser.positionalArguments());
}

void describeApplication() {
    QApplication::setApplicationName("ravelin");
    // No display name: Qt would append it to the title of every window.
    QApplication::setApplicationVersion(ApplicationInfo::version());
    QApplication::setDesktopFileName(ApplicationInfo::bundleIdentifier());
    QApplication::setWindowIcon(QIcon::fromTheme(ApplicationInfo::bundleIdentifier(), applicationIcon()));
    // What is to happen is decided by OpenWindows.
    QApplication::setQuitOnLastWindowClosed(false);
}

/// Waits until the terminated tools have ended and their files are deleted, but not longer than a session
/// waits at its end.
void waitUntilTerminated(AppDelegate& delegate) {
    constexpr int kMaximumMilliseconds = 5000;
    QEventLoop loop;
    QObject::connect(&delegate, &AppDelegate::terminated, &loop, &QEventLoop::quit);
    QTimer::singleShot(kMaximumMilliseconds, &loop, &QEventLoop::quit);
    if (!AppDelegate::isTerminated()) loop.exec();
}

/// Asks for a rating as soon as that does not disturb the user.
void connectRating(AppDelegate& delegate, MainWindow& window) {
    auto* quietMoment = new QuietMoment(&window);
    // A user who chooses a movie's track and folder is busy, too.
    quietMoment->setBusyWhen([&delegate] { return delegate.addSheet().isShown(); });
    QObject::connect(&delegate, &AppDelegate::ratingWindowRequested, quietMoment,
                     [quietMoment, &window](PXRatingWindowController& asked) {
                         if (window.findChild<RatingWindow*>()) return;
                         quietMoment->wait([controller = QPointer(&asked), &window] {
                             if (controller) (new RatingWindow(*controller, &window))->show();
                         });
                     });
}

/// Connects the objects that live as long as the application.
void connectParts(QApplication& application, AppDelegate& delegate, MainWindow& window,
                  SingleInstance& instance, DialogPanels& panels, DialogPresenter& presenter) {
    QObject::connect(&instance, &SingleInstance::opened, &delegate, [&](const QStringList& paths) {
        window.bringToFront(instance.activationToken());
        delegate.openFiles(paths);
    });
    QObject::connect(&instance, &SingleInstance::activated, &delegate,
                     [&] { window.bringToFront(instance.activationToken()); });
    QObject::connect(&window, &MainWindow::preferencesCreated, &window, [&](QWidget* preferences) {
        panels.setPreferencesWindow(preferences);
        presenter.setPreferencesWindow(preferences);
    });
    QObject::connect(
        &application, &QApplication::commitDataRequest, &delegate,
        [&](QSessionManager& session) {
            if (!session.allowsInteraction()) return;
            if (!delegate.applicationShouldTerminate()) session.cancel();
            session.release();
        },
        Qt::DirectConnection);
    QObject::connect(&delegate, &AppDelegate::terminated, &application, &QApplication::quit);
}

}  // namespace

int runApplication(int& argc, char** argv) {
    // The application object removes it from the environment.
    const QString token = SingleInstance::tokenFromEnvironment();
    QApplication application(argc, argv);
    describeApplication();
    installTranslations();
    const QStringList paths = parseCommandLine();

    logrings::install();
    DialogPresenter presenter;
    setAlertPresenter(&presenter);
    std::optional<SingleInstance> instance(std::in_place, ApplicationInfo::bundleIdentifier());
    switch (instance->begin(paths, token)) {
        case SingleInstance::Role::First:
            break;
        case SingleInstance::Role::HandedOver:
            return 0;
        case SingleInstance::Role::NoAnswer:
            alert_apptitled(
                Texts::tr("Ravelin is already running but does not answer. End it and start it again."),
                Texts::tr("OK"));
            standardUserDefaults().synchronise();
            return 1;
    }

    AppDelegate::initialize();
    WindowDesktop desktop(ApplicationInfo::name(), ApplicationInfo::bundleIdentifier());
    setSharedDesktop(&desktop);
    followDesktopAppearance(desktop);
    int status = 0;
    {
        DialogPanels panels;
        AppDelegate delegate(panels);
        MainWindow window(delegate);
        PluginWebEngine engine;
        const Documentation documentation(delegate, engine, {symbolicIcon("job-remove"), addWindowMenu});
        const WindowWatch watch(delegate.openWindows(), window);
        presenter.setMainWindow(&window);
        panels.setMainWindow(&window);
        connectParts(application, delegate, window, *instance, panels, presenter);
        connectRating(delegate, window);
        // Files that are opened from now on belong to the next instance.
        QObject::connect(&delegate, &AppDelegate::terminating, &delegate, [&] { instance.reset(); });
        const Interruption interruption;
        QObject::connect(&interruption, &Interruption::interrupted, &delegate,
                         [&] { delegate.terminate(false); });
        // Work that can wait until the window is painted.
        QObject::connect(&window, &MainWindow::painted, &delegate, [&] {
            QTimer::singleShot(0, &delegate, [&] {
                RunJournal::cleanUpAfterCrashes();
                crashlogs::tidyUp();
                desktop.watchAppearance();
                delegate.openFirstFiles(paths);
            });
        });
        delegate.applicationWillFinishLaunching();
        window.show();
        // The application may have been terminated while an alert was open.
        if (!delegate.isTerminating()) status = QApplication::exec();
        if (!delegate.isTerminating()) delegate.applicationWillTerminate();
        waitUntilTerminated(delegate);
        delegate.startSuccessor();
        presenter.setMainWindow(nullptr);
    }
    setSharedDesktop(nullptr);
    setAlertPresenter(nullptr);
    return status;
}
