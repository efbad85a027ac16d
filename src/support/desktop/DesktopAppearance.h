#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

/// How the user wants applications to look, as the desktop portal tells it. False is what everything is until
/// it has told otherwise, and stays where there is no portal; none is started for it.
class DesktopAppearance : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks, and follows the user's changes from now on; once. The answer comes as changed().
    void watch(QDBusConnection connection);

    bool prefersDark() const { return m_prefersDark; }
    bool prefersReducedMotion() const { return m_prefersReducedMotion; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void onOwnerChanged(const QString& name, const QString& before, const QString& now);

private:
    void ask(const QDBusConnection& connection);
    /// Whether that changed something.
    bool applySetting(const QString& group, const QString& key, const QVariant& value);

    bool m_prefersDark = false;
    bool m_prefersReducedMotion = false;
};
