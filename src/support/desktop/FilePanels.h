#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// The panels in which the user chooses files and folders. The window brings the desktop's own, the tests
/// prepared answers. Each returns at once and calls `chosen` on the main thread when the user confirmed; a
/// cancelled panel calls nothing. Paths are absolute.
class FilePanels {
public:
    /// The window that a panel belongs to.
    enum class Over { MainWindow, Preferences };

    virtual ~FilePanels() = default;

    /// Several files, of the extensions given (lower case, without point).
    virtual void chooseFiles(const QStringList& extensions,
                             std::function<void(const QStringList&)> chosen) = 0;
    /// One existing folder. `startingIn` may be empty.
    virtual void chooseFolder(Over over, const QString& startingIn,
                              std::function<void(const QString&)> chosen) = 0;
    /// A name for a new file, ending in the extension. The panel has asked before it names a file that
    /// exists.
    virtual void saveFile(const QString& startingIn, const QString& fileName, const QString& extension,
                          std::function<void(const QString&)> chosen) = 0;
};
