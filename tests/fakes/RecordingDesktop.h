#pragma once

#include "support/desktop/Desktop.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

/// Records the requests to the desktop.
class RecordingDesktop : public Desktop {
public:
    quint32 acquireSleepAssertion(const QString& reason) override {
        reasons.append(reason);
        held.insert(++m_lastAssertion);
        return m_lastAssertion;
    }
    void releaseSleepAssertion(quint32 assertion) override { held.remove(assertion); }
    void askWhetherAllowed(PowerAction, QObject*, const std::function<void(bool)>& handler) override {
        handler(true);
    }
    void carryOut(PowerAction action, QObject*, const std::function<void(const QString&)>& handler) override {
        carriedOut.append(action);
        handler(powerError);
    }
    void notify(const Notification& notification) override { notifications.append(notification); }
    void withdraw(const QString& group) override {
        if (!group.isEmpty()) withdrawn.append(group);
    }
    void reveal(const QString& path) override { revealed.append(path); }
    bool moveToTrash(const QString& path) override {
        trashed.append(path);
        return true;
    }
    bool openUrl(const QUrl& url) override {
        opened.append(url);
        return opens;
    }
    bool copyToClipboard(const QString& text) override {
        if (hasClipboard) clipboard = text;
        return hasClipboard;
    }
    bool isOptionKeyHeld() const override { return optionKeyIsHeld; }
    bool isSandboxed() const override { return sandboxed; }
    QStringList transferredFiles(const QString& key) override { return transfers.take(key); }
    void requestBackground(const QString& reason) override { backgroundReasons.append(reason); }
    void setLauncherProgress(std::optional<double> fraction) override { launcherProgress = fraction; }

    QStringList reasons;
    QSet<quint32> held;
    QList<PowerAction> carriedOut;
    QString powerError;  ///< Why it is refused; empty: it is not.
    QList<Notification> notifications;
    QStringList withdrawn;
    QStringList revealed;
    QStringList trashed;
    QList<QUrl> opened;
    bool opens = true;  ///< Whether the user has a program for the opened URL.
    bool hasClipboard = true;
    QString clipboard;
    bool optionKeyIsHeld = false;
    bool sandboxed = false;
    QHash<QString, QStringList> transfers;
    QStringList backgroundReasons;
    std::optional<double> launcherProgress;

private:
    quint32 m_lastAssertion = 0;
};
