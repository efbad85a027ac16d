#pragma once

#include "app/destinations/DestinationPopUp.h"
#include "support/desktop/FilePanels.h"
#include "watch/events/ReturnWatch.h"

#include <QObject>
#include <QStringList>

#include <optional>
#include <stdexcept>

/// A stored folder cannot be opened any more.
class BookmarkProblem : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The folders into which outputs go: those that the user stored, across launches, and those opened in this
/// run. Keeps both destination pop-ups. Main thread only.
class Destinations : public QObject {
    Q_OBJECT

public:
    /// `panels` outlives this.
    explicit Destinations(FilePanels& panels, QObject* parent = nullptr);

    DestinationPopUp& destinationPopUp() { return m_addSheet; }
    DestinationPopUp& preferencesDestinationPopUp() { return m_preferences; }

    /// Takes over the stored folders at launch: takes those that are not there off the list, and puts a
    /// default destination right that names none. Returns what the user is to be told of it; empty: nothing.
    /// A folder that is not there is remembered and comes back to its place when it is there again, also as
    /// the default destination, unless the user chose another one meanwhile.
    QString restoreAtLaunch();

    void rebuildDestinationPopUp();
    void rebuildPreferencesDestinationPopUp();
    /// Has the user choose a folder, stores it and selects it in the pop-up that asked.
    void chooseNewDestination(DestinationPopUp::Place sender);
    void clearDestinations();
    /// The user's choice in the preferences becomes the default of the add sheet.
    void setDefaultDestination(qsizetype index);

    /// A folder that is open for access in this run.
    struct OpenedFolder {
        QString path;
        bool securityScoped = false;  ///< From a bookmark: access starts anew for each use.
    };
    const QList<OpenedFolder>& openedFolders() const { return m_openedFolders; }
    void addOpenedFolder(const QString& path) { m_openedFolders.append({path, false}); }
    /// The last opened folder whose path begins `path`.
    std::optional<OpenedFolder> openedFolderFor(const QString& path) const;

    /// What keeps the stored folder from being used now; empty: nothing.
    QString problemOfFolder(qsizetype number) const;
    /// Opens a stored folder for a job, which closes it at its end. Throws BookmarkProblem.
    QString openFolder(qsizetype number) const;

Q_SIGNALS:
    /// Something to tell the user in passing.
    void message(const QString& text);

private:
    enum class Occasion { Launch, Return };

    /// What changed in the list, as paths.
    struct Changes {
        QStringList gone;
        QStringList returned;
    };

    void renumberFromOldVersions();
    Changes sortOut(Occasion occasion);
    void takeReturned();
    void watchForReturn();
    void clampDefaultDestination();
    void store(const QString& folder, DestinationPopUp::Place sender);

    FilePanels& m_panels;
    DestinationPopUp m_addSheet{DestinationPopUp::Place::AddSheet};
    DestinationPopUp m_preferences{DestinationPopUp::Place::Preferences};
    QList<OpenedFolder> m_openedFolders;
    ReturnWatch m_returnWatch;
};
