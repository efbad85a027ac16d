#pragma once

#include "app/destinations/DestinationPopUp.h"
#include "support/desktop/FilePanels.h"
#include "watch/events/ReturnWatch.h"

#include <QByteArrayList>
#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>
#include <stdexcept>

/// Thrown when a stored folder can no longer be opened.
class BookmarkProblem : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The folders for outputs: those that the user stored, which persist across launches, and those opened in
/// this run. Owns both destination pop-ups. Main thread only.
class Destinations : public QObject {
    Q_OBJECT

public:
    /// `panels` must outlive this object.
    explicit Destinations(FilePanels& panels, QObject* parent = nullptr);

    DestinationPopUp& destinationPopUp() { return m_addSheet; }
    DestinationPopUp& preferencesDestinationPopUp() { return m_preferences; }

    /// Reads the stored folders at launch, removes those that do not exist from the list, and corrects a
    /// default destination that is out of range. Returns a message for the user; empty: none. A folder that
    /// does not exist is remembered: when it exists again, it returns to its place in the list, and becomes
    /// the default destination again unless the user has chosen another one.
    QString restoreAtLaunch();

    void rebuildDestinationPopUp();
    void rebuildPreferencesDestinationPopUp();
    /// Lets the user choose a folder, stores it and selects it in the pop-up `sender`.
    void chooseNewDestination(DestinationPopUp::Place sender);
    void clearDestinations();
    /// The same after a question, if there is a folder. Returns false if the user keeps them.
    bool forgetAll();
    /// Stores the choice made in the preferences as the default of the add sheet.
    void setDefaultDestination(qsizetype index);

    /// A folder of the list.
    struct StoredFolder {
        QString name;
        QString path;
        QString problem;  ///< Why it cannot be used now; empty: it can.
    };
    /// In the order of the pop-ups. It changes only with changed() of the pop-ups.
    QList<StoredFolder> storedFolders() const;
    /// Changes one folder of the list. The default destination and a destination that is chosen for a movie
    /// follow their folders; where theirs is removed, the user will be asked. Absent folders keep their
    /// places. What another process has made of the list meanwhile stays.
    ///
    /// Blanks around `name` are removed; an empty one is no name, and the folder keeps its own.
    void renameFolder(qsizetype number, const QString& name);
    /// The folder itself and what is in it stay.
    void removeFolder(qsizetype number);
    /// `to` is its number afterwards.
    void moveFolder(qsizetype number, qsizetype to);

    /// A folder that this run has access to.
    struct OpenedFolder {
        QString path;
        bool securityScoped = false;  ///< From a bookmark: access has to be started for each use.
    };
    const QList<OpenedFolder>& openedFolders() const { return m_openedFolders; }
    void addOpenedFolder(const QString& path) { m_openedFolders.append({path, false}); }
    /// The most recently opened folder whose path is a prefix of `path`.
    std::optional<OpenedFolder> openedFolderFor(const QString& path) const;

    /// The path of a stored folder, which may be gone.
    QString storedFolder(qsizetype number) const;
    /// Why the stored folder cannot be used now; empty: it can.
    QString problemOfFolder(qsizetype number) const;
    /// Opens a stored folder for a job, which closes it when it ends. Throws BookmarkProblem.
    QString openFolder(qsizetype number) const;

Q_SIGNALS:
    /// Message for the status area.
    void message(const QString& text);

private:
    enum class Occasion { Launch, Return };

    /// Changes of the list, as paths.
    struct Changes {
        QStringList gone;
        QStringList returned;
    };

    struct KnownFolder;
    static QList<KnownFolder> knownFolders();

    void renumberFromOldVersions();
    Changes updateStoredFolders(Occasion occasion);
    void restoreReturned();
    void watchForReturn();
    void clampDefaultDestination();
    void edit(qsizetype number, const std::function<void(QList<KnownFolder>&, qsizetype)>& change);
    void save(const QList<KnownFolder>& folders, qsizetype otherDefault);
    void noteListed();
    void rebuildKeepingChoice();
    void followSettings();
    void store(const QString& folder, DestinationPopUp::Place sender);

    FilePanels& m_panels;
    DestinationPopUp m_addSheet{DestinationPopUp::Place::AddSheet};
    DestinationPopUp m_preferences{DestinationPopUp::Place::Preferences};
    QList<OpenedFolder> m_openedFolders;
    ReturnWatch m_returnWatch;
    QByteArrayList m_listed;     ///< The folders that the pop-ups show.
    QStringList m_listedNames;   ///< Their names.
    bool m_isFollowing = false;  ///< followSettings() is due.
};
