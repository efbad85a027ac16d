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

/// The folder whose new movies are taken in by themselves: which it is, whether it is on, and what it is
/// doing. Main thread only.
class WatchFolder : public QObject {
    Q_OBJECT

public:
    /// `panels` outlives this.
    explicit WatchFolder(FilePanels& panels, QObject* parent = nullptr, const WatchTimes& times = {});
    ~WatchFolder() override;

    /// Has the user choose the folder.
    void watchfolderSetClicked();
    /// Does what the settings say at launch: turns the watch on or off. Returns a message for the user;
    /// empty: none. A watch folder that is not there is remembered; it is the watch folder again, and watched
    /// if it was, when it is there again and the user has chosen no other.
    QString resumeAtLaunch();
    /// The same later; whenever somebody else changes the settings it is done at once.
    void watchfolderActiveClicked();
    /// Turns the watch off and forgets the folder.
    void forget();
    /// Ends the access to the folder; the watch ends with the process.
    void stopAccess();

    /// The folder's name; empty as long as none was found.
    const QString& watchfolderLabel() const { return m_label; }
    /// The whole path; empty: none.
    QString folder() const { return m_folder.value_or(QString()); }
    bool isWatching() const;
    /// What is going on, in one sentence for the user.
    QString stateText() const;

Q_SIGNALS:
    /// A complete movie, to be taken in as if it were dropped.
    void arrived(const QString& path);
    /// The label, the state or the setting changed.
    void changed();
    /// Something that the user should know now.
    void message(const QString& text);

private:
    /// Without an answer to the change.
    void store(const settings::Row& setting, const QVariant& value);
    void turnOff();
    QString apply();
    void remember(const QByteArray& bookmark, bool isActive);
    void forgetAbsent();
    bool takeReturned();
    void startObserving(const QString& folder);
    void onEnded(const MovieArrivals* watch, const QString& reason);
    void say(const QString& text);

    FilePanels& m_panels;
    const WatchTimes m_times;
    std::optional<QString> m_folder;
    bool m_hasAccess = false;  ///< Access to m_folder is open.
    QString m_label;
    QString m_problem;                                ///< Why it is off, or what is not watched.
    std::shared_ptr<QSet<QString>> m_processedNames;  ///< Of this run; never emptied.
    ReturnWatch m_returnWatch;
    /// What was left in the folder's place when the watch ended, such as the mount point of its volume.
    std::optional<std::pair<quint64, quint64>> m_leftBehind;
    bool m_isStoring = false;
    MovieArrivals* m_current = nullptr;
    /// With those that run on for the rest of this run: another folder was chosen meanwhile.
    std::vector<std::unique_ptr<MovieArrivals>> m_watches;
};
