#pragma once

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>

/// The settings of one user: values by key. A read looks at the overrides of this run, then at what is
/// stored, then at the registered defaults. Writes change the stored values in memory and reach the file with
/// synchronise(). Several instances may use one file: each writes only the keys that it changed itself, over
/// what the file holds by then, under a lock. Callable from any thread.
class SettingsStore {
public:
    /// Reads `filePath`, which need not exist. A damaged file is kept aside under a new name and the store
    /// starts empty; a file that cannot be read is left alone and never written over. Either is told by
    /// problem().
    explicit SettingsStore(QString filePath);

    const QString& filePath() const { return m_filePath; }

    /// An invalid variant when no place has the key.
    QVariant object(const QString& key) const;
    /// An invalid variant removes the stored value.
    void setObject(const QString& key, const QVariant& value);
    /// The stored value alone, without overrides and defaults.
    QVariant storedObject(const QString& key) const;

    /// Registered defaults answer reads of keys that were never set; they are not written to the file.
    void registerDefaults(const QVariantMap& defaults);
    /// Read before everything else for the life of this store and never written.
    void setOverride(const QString& key, const QVariant& value);

    /// Writes what changed. True when the file holds everything; false: problem() says why, the changes are
    /// kept for the next call.
    bool synchronise();
    bool hasChanges() const;

    /// What went wrong with the file, for the user; empty: nothing.
    QString problem() const;

    /// How soon changes are to be saved.
    enum class Urgency { Later, Soon };
    /// Called after a write to the store that had nothing to save before (Later), and by askToSaveSoon()
    /// (Soon), in the caller's thread and outside the store's lock: the moment to plan a synchronise().
    void setChangeHandler(std::function<void(Urgency)> handler);
    /// What was written is wanted on the disk soon, as the process may crash. Nothing where nothing changed.
    void askToSaveSoon() const;
    /// Called after the stored value of a key has changed, by a write or by what synchronise() found in the
    /// file, in that call's thread and outside the store's lock.
    void setValueHandler(std::function<void(const QString& key)> handler);

private:
    void keepAside();
    bool write();
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
