#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

/// A message for the user's notification area.
struct Notification {
    QString title;
    QString text;
    QString action;  ///< Title of the action button; empty: no button.
    QString path;    ///< File that the action shows; empty: none.
    /// Replaces the last one of the same group on the screen; empty: it stays beside the others.
    QString group;
    bool showsWindow = false;  ///< Without a path: a click shows the main window.
    QString quitAction{};      ///< Title of a button that quits the application; empty: no button.
};

/// What can be done with the machine.
enum class PowerAction { Sleep, ShutDown };

/// Interface to the desktop's services. Requests return at once unless noted; where a service is missing,
/// they do nothing. Main thread only.
class Desktop : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Prevents the machine from sleeping until the assertion is released. Returns its identifier, which is
    /// never 0.
    virtual quint32 acquireSleepAssertion(const QString& reason) = 0;

    /// Does nothing for 0 and for identifiers that were already released.
    virtual void releaseSleepAssertion(quint32 assertion) = 0;

    /// Asks whether the user may do this, perhaps after a password. `handler` is called from the event loop
    /// with the answer, never after `context` was deleted.
    virtual void askWhetherAllowed(PowerAction /*action*/, QObject* /*context*/,
                                   const std::function<void(bool)>& /*handler*/) {}

    /// Does this; the system may ask the user for a password first. `handler` is called as above, with the
    /// reason why it was refused, or an empty text when it was accepted.
    virtual void carryOut(PowerAction /*action*/, QObject* /*context*/,
                          const std::function<void(const QString&)>& /*handler*/) {}

    /// Posts `notification` with the default sound.
    virtual void notify(const Notification& notification) = 0;

    /// Takes the last notification of the group off the screen; does nothing if it is no longer there.
    virtual void withdraw(const QString& /*group*/) {}

    /// Shows the file selected in the file manager, or its folder where the file manager cannot select.
    virtual void reveal(const QString& path) = 0;

    /// The same for several files, where the file manager can in as few windows as possible.
    virtual void revealTogether(const QStringList& paths);

    /// Moves the file to the user's trash; waits until that is done. Returns false if it could not be moved.
    virtual bool moveToTrash(const QString& path);

    /// Opens a web page, a file, a folder or a mailto link with the user's program for it. Returns false if
    /// there is known to be none; only a mailto link is awaited to find out.
    virtual bool openUrl(const QUrl& url) = 0;

    /// Copies the text to the clipboard. Returns false if there is no clipboard.
    virtual bool copyToClipboard(const QString& /*text*/) { return false; }

    /// Whether the Option key (Alt) is held down now.
    virtual bool isOptionKeyHeld() const { return false; }

    /// Whether a sandbox limits the application to folders that the user opened.
    virtual bool isSandboxed() const { return false; }

    /// The paths of files that another application hands over by a key of the file transfer portal, which is
    /// what a drop into a sandbox contains; waits for the answer. Empty if there are none.
    virtual QStringList transferredFiles(const QString& /*key*/) { return {}; }

    /// Asks that the application may go on without windows; call it when the last one is closed. `reason` is
    /// for the user.
    virtual void requestBackground(const QString& /*reason*/) {}

    /// Shows the progress, 0 to 1, on the application's launcher icon; null removes it.
    virtual void setLauncherProgress(std::optional<double> /*fraction*/) {}

    /// The user's appearance preferences; false until they are known.
    virtual bool prefersDark() const { return false; }
    virtual bool prefersReducedMotion() const { return false; }

Q_SIGNALS:
    /// The value of prefersDark() or prefersReducedMotion() changed.
    void appearanceChanged();
    /// The user clicked a notification (its button or its body) that was posted with a path, or, with an
    /// empty path, one that shows the main window. `activationToken` is the desktop's permission to bring a
    /// window to the front, if it gave one.
    void notificationActivated(const QString& path, const QString& activationToken = {});
    /// The user clicked the button of a notification that quits.
    void quitActivated(const QString& activationToken = {});
};

/// The desktop that the application uses; not owned. If none is set, sharedDesktop() returns one that does
/// nothing.
void setSharedDesktop(Desktop* desktop);
Desktop& sharedDesktop();
