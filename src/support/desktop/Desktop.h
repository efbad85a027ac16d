#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>

/// A message for the user's notification area.
struct Notification {
    QString title;
    QString text;
    QString action;  ///< Title of the action button; empty: no button.
    QString path;    ///< File that the action shows; empty: none.
};

/// What the application asks of the desktop around it. Every request is answered at once and none fails
/// loudly: where nobody listens, nothing happens. Main thread only.
class Desktop : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Keeps the machine from going to sleep until the assertion is released.
    /// Returns its identifier, which is never 0.
    virtual quint32 acquireSleepAssertion(const QString& reason) = 0;

    /// Releasing 0 or an identifier that was released before does nothing.
    virtual void releaseSleepAssertion(quint32 assertion) = 0;

    /// Posts `notification` with the default sound.
    virtual void notify(const Notification& notification) = 0;

    /// Shows the file selected in the file manager, or its folder where the file manager cannot select.
    virtual void reveal(const QString& path) = 0;

    /// Moves the file to the user's trash. False: it is where it was.
    virtual bool moveToTrash(const QString& path);

    /// Opens a page, a folder or a mail link with the user's program for it. False: there is none, as far as
    /// that is known at once; of a mail link it is waited for.
    virtual bool openUrl(const QUrl& url) = 0;

    /// Puts the text where the user can paste it from. False: there is no such place.
    virtual bool copyToClipboard(const QString& /*text*/) { return false; }

    /// Whether the Option key (Alt) is held down now.
    virtual bool isOptionKeyHeld() const { return false; }

    /// Whether a sandbox lets us reach only the folders that the user opened.
    virtual bool isSandboxed() const { return false; }

    /// Shows at the application's place in the launcher how far the work is, 0 to 1; nothing: none.
    virtual void setLauncherProgress(std::optional<double> /*fraction*/) {}

    /// What the user told the desktop; false as long as it is not known.
    virtual bool prefersDark() const { return false; }
    virtual bool prefersReducedMotion() const { return false; }

Q_SIGNALS:
    /// prefersDark() or prefersReducedMotion() tells something else now.
    void appearanceChanged();
    /// The user chose a notification (its button or its body) that was posted with a path.
    void notificationActivated(const QString& path);
};

/// The desktop that the application talks to; not owned. Without one, a desktop on which nothing happens.
void setSharedDesktop(Desktop* desktop);
Desktop& sharedDesktop();
