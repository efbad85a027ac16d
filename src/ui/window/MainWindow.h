#pragma once

#include <QMainWindow>

#include <memory>

class AppDelegate;
class ConversionJob;
class JobListModel;
class PreferencesWindow;
class NoticeBar;
class Posters;
class QLabel;

namespace Ui {
class MainWindow;
}

/// The main window: toolbar, add sheet, job list, and drops. Closing it only hides it; see OpenWindows
/// for what follows. Main thread only.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `delegate` must outlive the window.
    explicit MainWindow(AppDelegate& delegate);
    ~MainWindow() override;

    /// Shows the window in front of the others. `activationToken` is the desktop's permission to do so, if it
    /// gave one.
    void bringToFront(const QString& activationToken = {});
    void openPreferences();
    /// Null until it was opened for the first time.
    PreferencesWindow* preferencesWindow() const { return m_preferences.get(); }

Q_SIGNALS:
    /// The window was painted for the first time.
    void painted();
    void preferencesCreated(QWidget* window);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setUpActions();
    void setUpToolBar();
    void setUpBars();
    void addBar(NoticeBar* bar);
    void setUpUndo();
    void setUpPosters();
    void setUpEndAction();
    void followQueue();
    void announceState(ConversionJob* job);
    void refreshTitle();
    void refreshPause();
    void refreshPage();
    void refreshSummary();
    void refreshCommands();
    void showStatus(const QString& message);
    void fillQueueMenu();
    void setUpDetails();
    void toggleDetails(const ConversionJob* job, bool mayClose);
    void closeDetails();
    void restoreGeometryFromSettings();

    AppDelegate& m_delegate;
    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<JobListModel> m_model;
    std::unique_ptr<PreferencesWindow> m_preferences;
    Posters* m_posters = nullptr;
    QAction* m_closeDetails = nullptr;  ///< Enabled while they are shown.
    QLabel* m_summary = nullptr;
    QList<QAction*> m_jobActions;
    bool m_wasPainted = false;
};
