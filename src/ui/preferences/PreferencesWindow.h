#pragma once

#include "ui/preferences/SettingsBinder.h"

#include <QWidget>

class Destinations;
class DestinationsPage;
class QListWidget;
class QStackedWidget;
class WatchFolder;

/// The preferences: a list of pages, and the selected page. Controls are bound to their settings by the
/// properties in the interface files; see SettingsBinder. Main thread only.
class PreferencesWindow : public QWidget {
    Q_OBJECT

public:
    /// Both must outlive the window.
    PreferencesWindow(Destinations& destinations, WatchFolder& watchFolder, QWidget* parent = nullptr);

    /// Shows the current settings. Called when the window is shown, too.
    void refresh();
    /// Selects the page with the control of that setting, if there is one, and gives it the focus.
    void showSetting(const QString& key);

Q_SIGNALS:
    /// The window is about to close.
    void closing();
    /// The user wants to see the main window, which may be closed.
    void mainWindowRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    /// Creates a page from the interface file `Form`: its item in the list, and around its controls a scroll
    /// area and the button that restores their defaults.
    template <class Form>
    QWidget* addPage(const QString& name, const QString& icon);
    /// Adds a pane to the container of the conversion styles.
    template <class Form>
    void addPane(const QString& name);
    void addPageFrame(QWidget* content, const QString& name, const QString& icon);
    void restoreDefaults(const QWidget* page);
    /// Shows the pane of the chosen conversion style.
    void selectConversionStyle();
    void applyStyle();

    Destinations& m_destinations;
    WatchFolder& m_watchFolder;
    SettingsBinder m_binder;
    QListWidget* m_list = nullptr;
    QStackedWidget* m_pages = nullptr;
    DestinationsPage* m_folders = nullptr;
    QWidget* m_customContainer = nullptr;
};
