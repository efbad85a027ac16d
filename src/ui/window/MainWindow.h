#pragma once

#include <QMainWindow>

#include <memory>

class AppDelegate;
class JobListModel;
class PreferencesWindow;
class QLabel;

namespace Ui {
class MainWindow;
}

/// The one window: toolbar, add sheet, job list, and drops. Closing it only hides it; the application goes
/// on.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `delegate` outlives the window.
    explicit MainWindow(AppDelegate& delegate);
    ~MainWindow() override;

    /// Shows the window in front of the others. `activationToken` is the desktop's permission to do so, where
    /// it gave one.
    void bringToFront(const QString& activationToken = {});
    void openPreferences();
    /// Null as long as it was not opened.
    PreferencesWindow* preferencesWindow() const { return m_preferences.get(); }

Q_SIGNALS:
    /// The window was drawn for the first time.
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
    void followQueue();
    void refreshTitle();
    void refreshPause();
    void refreshPage();
    void refreshSummary();
    void showStatus(const QString& message);
    void fillQueueMenu();
    void restoreGeometryFromSettings();

    AppDelegate& m_delegate;
    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<JobListModel> m_model;
    std::unique_ptr<PreferencesWindow> m_preferences;
    QLabel* m_summary = nullptr;
    QList<QAction*> m_jobActions;
    bool m_wasPainted = false;
};
