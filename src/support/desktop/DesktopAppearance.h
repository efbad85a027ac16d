#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

/// The user's appearance preferences from the desktop portal. All values are false until the portal replies,
/// and stay false without a portal; no portal is started for this. Main thread only.
class DesktopAppearance : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Requests the values and follows their changes. Call once. The reply is reported by changed().
    void watch(QDBusConnection connection);

    bool prefersDark() const { return m_prefersDark; }
    bool prefersReducedMotion() const { return m_prefersReducedMotion; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void onOwnerChanged(const QString& name, const QString& before, const QString& now);

private:
    void requestSettings(const QDBusConnection& connection);
    /// Returns whether a value changed.
    bool applySetting(const QString& group, const QString& key, const QVariant& value);

    bool m_prefersDark = false;
    bool m_prefersReducedMotion = false;
};
