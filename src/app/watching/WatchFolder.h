#pragma once

#include "app/watching/MovieArrivals.h"
#include "support/desktop/FilePanels.h"
#include "watch/events/ReturnWatch.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace settings {
struct Row;
}

/// The watch folder, whose new movies are added automatically: its path, whether it is on, and its state.
/// Main thread only.
class WatchFolder : public QObject {
    Q_OBJECT

public:
    /// `panels` must outlive this object.
    explicit WatchFolder(FilePanels& panels, QObject* parent = nullptr, const WatchTimes& times = {});
    ~WatchFolder() override;

    /// Lets the user choose the folder.
    void watchfolderSetClicked();
    /// Turns the watch on or off at launch, according to the settings. Returns a message for the user; empty:
    /// none. A watch folder that does not exist is remembered: when it exists again and the user has chosen
    /// no other, it becomes the watch folder again, and is watched if it was before.
    QString resumeAtLaunch();
    /// Applies the settings after launch. When another component changes them, this happens automatically.
    void watchfolderActiveClicked();
    /// Turns the watch off and clears the folder.
    void forget();
    /// Releases the access to the folder. The watch itself runs until the process ends.
    void stopAccess();

    /// The folder's name; empty until one was found.
    const QString& watchfolderLabel() const { return m_label; }
    /// The whole path; empty: none.
    QString folder() const { return m_folder.value_or(QString()); }
    bool isWatching() const;
    /// Whether a folder was chosen, also if it is not there now.
    bool isChosen() const;
    /// Whether it is watched, or will be as soon as it is there again.
    bool isExpecting() const;
    /// The state in one sentence for the user.
    QString stateText() const;

Q_SIGNALS:
    /// A complete movie, to be added like a dropped file.
    void arrived(const QString& path);
    /// The label, the state or the setting changed.
    void changed();
    /// Message that the user should see now.
    void message(const QString& text);

private:
    /// Writes the setting without reacting to the change.
    void store(const settings::Row& setting, const QVariant& value);
    void turnOff();
    QString apply();
    void remember(const QByteArray& bookmark, bool isActive);
    void forgetAbsent();
    bool restoreReturned();
    void startObserving(const QString& folder);
    void onEnded(const MovieArrivals* watch, const QString& reason);
    void say(const QString& text);

    FilePanels& m_panels;
    const WatchTimes m_times;
    std::optional<QString> m_folder;
    bool m_hasAccess = false;  ///< The access to m_folder is held.
    QString m_label;
    QString m_problem;                                ///< Why the watch is off, or which part is not watched.
    std::shared_ptr<QSet<QString>> m_processedNames;  ///< For the whole run; never cleared.
    ReturnWatch m_returnWatch;
    /// Device and inode that were found in the folder's place when the watch ended, such as the mount point
    /// of its volume.
    std::optional<std::pair<quint64, quint64>> m_leftBehind;
    bool m_isStoring = false;
    MovieArrivals* m_current = nullptr;
    /// Includes watches of folders chosen earlier, which continue until the process ends.
    std::vector<std::unique_ptr<MovieArrivals>> m_watches;
};
