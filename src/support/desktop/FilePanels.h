#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// Interface to the panels in which the user chooses files and folders: the window implements it with the
/// desktop's panels, tests with prepared answers. Main thread only. Each function returns at once and calls
/// `chosen` when the user confirms; a cancelled panel calls nothing. Paths are absolute.
class FilePanels {
public:
    /// The window that a panel belongs to.
    enum class Over { MainWindow, Preferences };

    virtual ~FilePanels() = default;

    /// Several files with the given extensions (lower case, without dot).
    virtual void chooseFiles(const QStringList& extensions,
                             std::function<void(const QStringList&)> chosen) = 0;
    /// One existing folder. `startingIn` may be empty.
    virtual void chooseFolder(Over over, const QString& startingIn,
                              std::function<void(const QString&)> chosen) = 0;
    /// A name for a new file, ending in the extension. The panel itself asks before it returns the name of an
    /// existing file.
    virtual void saveFile(const QString& startingIn, const QString& fileName, const QString& extension,
                          std::function<void(const QString&)> chosen) = 0;
};
