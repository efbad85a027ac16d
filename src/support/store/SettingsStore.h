#pragma once

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>

/// The settings of one user: values by key. A read looks at the overrides of this run, then at the stored
/// values, then at the registered defaults. Writes change the stored values in memory; synchronise() writes
/// them to the file. Several processes may share one file: each updates only the keys that it changed itself,
/// under a lock. Callable from any thread.
class SettingsStore {
public:
    /// Reads `filePath`, which need not exist. A damaged file is renamed and the store starts empty; a file
    /// that cannot be read is never overwritten. problem() reports both.
    explicit SettingsStore(QString filePath);

    const QString& filePath() const { return m_filePath; }

    /// An invalid variant if the key has no value, override or default.
    QVariant object(const QString& key) const;
    /// Those of all keys at one moment.
    QVariantMap objects() const;
    /// An invalid variant removes the stored value.
    void setObject(const QString& key, const QVariant& value);
    /// Sets several values of which each is wrong without the others: all of them are written to the file,
    /// also those that are the same as before.
    void setTogether(const QVariantMap& values);
    /// The stored value only, without overrides and defaults.
    QVariant storedObject(const QString& key) const;

    /// Sets the values of keys that are not stored. Defaults are never written to the file.
    void registerDefaults(const QVariantMap& defaults);
    /// Sets a value that precedes the stored one for the life of this store. Overrides are never written to
    /// the file.
    void setOverride(const QString& key, const QVariant& value);

    /// Writes the changes. Returns true if the file is up to date. On failure, problem() has the reason and
    /// the changes are kept for the next call.
    bool synchronise();
    bool hasChanges() const;
    /// Reads what other processes have written; own changes are written, too.
    void readAgain();

    /// The problem with the file, for the user; empty if there is none.
    QString problem() const;

    /// How soon to save changes.
    enum class Urgency { Later, Soon };
    /// Sets the handler that schedules synchronise(). Called after the first unsaved change (Later) and by
    /// askToSaveSoon() (Soon), on the thread of that call and outside the store's lock.
    void setChangeHandler(std::function<void(Urgency)> handler);
    /// Requests an early save of the changes, as the process may crash. Does nothing if there are none.
    void askToSaveSoon() const;
    /// Sets the handler that is called after the stored value of a key changed, by a write or because
    /// a new value was read from the file; on the thread of that call and outside the store's lock.
    void setValueHandler(std::function<void(const QString& key)> handler);

private:
    void set(const QVariantMap& values, bool evenIfSame);
    void keepAside();
    bool write();
    bool cannotSave(const QString& reason);
    bool canWrite() const { return !m_unreadable; }

    const QString m_filePath;
    mutable QMutex m_mutex;
    QVariantMap m_stored;
    QVariantMap m_defaults;
    QVariantMap m_overrides;
    QSet<QString> m_changed;
    QString m_problem;
    bool m_unreadable = false;
    std::function<void(Urgency)> m_changeHandler;
    std::function<void(const QString& key)> m_valueHandler;
};
