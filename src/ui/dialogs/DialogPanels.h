#pragma once

#include "support/desktop/FilePanels.h"

#include <QList>
#include <QPointer>
#include <QWidget>

class QFileDialog;

/// The file panels of the desktop, or Qt's if it has none, each modal to its window. An open panel is closed
/// with this object or with its window, and its callback is then not called. Main thread only.
class DialogPanels : public FilePanels {
public:
    DialogPanels() = default;
    ~DialogPanels() override;
    DialogPanels(const DialogPanels&) = delete;
    DialogPanels& operator=(const DialogPanels&) = delete;

    /// Not owned; may be null, and may be destroyed at any time.
    void setMainWindow(QWidget* window) { m_mainWindow = window; }
    void setPreferencesWindow(QWidget* window) { m_preferencesWindow = window; }

    void chooseFiles(const QStringList& extensions, std::function<void(const QStringList&)> chosen) override;
    void chooseFolder(Over over, const QString& startingIn,
                      std::function<void(const QString&)> chosen) override;
    void saveFile(const QString& startingIn, const QString& fileName, const QString& extension,
                  std::function<void(const QString&)> chosen) override;

private:
    QFileDialog* makeDialog(Over over, const QString& title);
    QWidget* window(Over over) const;
    void keep(QWidget* dialog);
    /// For a name whose extension was added after the panel had asked whether to replace the name without it.
    void askToReplace(const QString& path, const std::function<void()>& replace,
                      const std::function<void()>& keepIt);

    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_preferencesWindow;
    QList<QPointer<QWidget>> m_open;  ///< They delete themselves when they are closed.
};
