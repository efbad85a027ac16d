#include "support/SettingsStore.h"

#include "support/FileLock.h"
#include "support/Files.h"
#include "support/Format.h"
#include "support/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>

namespace {

constexpr int kLockWaitMilliseconds = 5000;

QStringList differingKeys(const QVariantMap& before, const QVariantMap& after) {
    QStringList keys = before.keys() + after.keys();
    keys.removeDuplicates();
    keys.removeIf([&](const QString& key) { return before.value(key) == after.value(key); });
    return keys;
}

}  // namespace

SettingsStore::SettingsStore(QString filePath) : m_filePath(std::move(filePath)) {
    switch (settingsfile::read(m_filePath, m_stored)) {
        case settingsfile::ReadResult::Read:
        case settingsfile::ReadResult::Missing:
            break;
        case settingsfile::ReadResult::Unreadable:
            m_unreadable = true;
            m_problem = makeString(
                "The settings in '%@' can't be read. Default settings are used and changes are not saved.",
                m_filePath);
            break;
        case settingsfile::ReadResult::Damaged:
            keepAside();
            break;
    }
}

void SettingsStore::keepAside() {
    const QString aside = files::uniqueFile(files::withoutExtension(m_filePath) + "-damaged.json");
    if (QFile::rename(m_filePath, aside)) {
        m_problem = makeString(
            "The settings file was damaged. It is kept as '%@'; default settings are used.", aside);
    } else {
        m_unreadable = true;
        m_problem = makeString(
            "The settings file '%@' is damaged. Default settings are used and changes are not saved.",
            m_filePath);
    }
}

QVariant SettingsStore::object(const QString& key) const {
    const QMutexLocker lock(&m_mutex);
    for (const QVariantMap* place : {&m_overrides, &m_stored, &m_defaults}) {
        if (const auto found = place->constFind(key); found != place->cend()) return *found;
    }
    return {};
}

QVariant SettingsStore::storedObject(const QString& key) const {
    const QMutexLocker lock(&m_mutex);
    return m_stored.value(key);
}

QVariant SettingsStore::registeredDefault(const QString& key) const {
    const QMutexLocker lock(&m_mutex);
    return m_defaults.value(key);
}

void SettingsStore::setObject(const QString& key, const QVariant& value) {
    std::function<void()> tell;
    std::function<void(const QString&)> valueHandler;
    {
        const QMutexLocker lock(&m_mutex);
        const auto found = m_stored.constFind(key);
        const bool same = found == m_stored.cend()
                              ? !value.isValid()
                              : value.isValid() && found->metaType() == value.metaType() && *found == value;
        if (same) return;
        if (value.isValid()) {
            m_stored.insert(key, value);
        } else {
            m_stored.remove(key);
        }
        if (m_changed.isEmpty()) tell = m_changeHandler;
        m_changed.insert(key);
        valueHandler = m_valueHandler;
    }
    if (tell) tell();
    if (valueHandler) valueHandler(key);
}

void SettingsStore::registerDefaults(const QVariantMap& defaults) {
    const QMutexLocker lock(&m_mutex);
    m_defaults.insert(defaults);
}

void SettingsStore::setOverride(const QString& key, const QVariant& value) {
    const QMutexLocker lock(&m_mutex);
    m_overrides.insert(key, value);
}

bool SettingsStore::synchronise() {
    QStringList foreign;  // keys that another instance changed
    std::function<void(const QString&)> valueHandler;
    bool isSaved = false;
    {
        const QMutexLocker lock(&m_mutex);
        const QVariantMap before = m_stored;
        isSaved = write();
        valueHandler = m_valueHandler;
        if (valueHandler) foreign = differingKeys(before, m_stored);
    }
    for (const QString& key : std::as_const(foreign))
        valueHandler(key);
    return isSaved;
}

bool SettingsStore::write() {
    if (m_changed.isEmpty()) return true;
    if (!canWrite()) return false;

    QDir().mkpath(QFileInfo(m_filePath).path());
    FileLock fileLock(m_filePath + ".lock");
    if (!fileLock.lock(kLockWaitMilliseconds)) {
        m_problem = makeString("The settings can't be saved: '%@' can't be locked.", m_filePath);
        return false;
    }
    QVariantMap merged;
    switch (settingsfile::read(m_filePath, merged)) {
        case settingsfile::ReadResult::Read:
            break;
        case settingsfile::ReadResult::Missing:
            merged = m_stored;
            break;
        case settingsfile::ReadResult::Damaged:
            merged = m_stored;
            keepAside();
            if (!canWrite()) return false;
            break;
        case settingsfile::ReadResult::Unreadable:
            m_problem =
                makeString("The settings in '%@' can't be read, so changes are not saved.", m_filePath);
            return false;
    }
    for (const QString& key : std::as_const(m_changed)) {
        if (m_stored.contains(key)) {
            merged.insert(key, m_stored.value(key));
        } else {
            merged.remove(key);
        }
    }
    QString error;
    if (!settingsfile::write(m_filePath, merged, error)) {
        m_problem = makeString("The settings can't be saved in '%@': %@", m_filePath, error);
        return false;
    }
    m_stored = merged;
    m_changed.clear();
    return true;
}

bool SettingsStore::hasChanges() const {
    const QMutexLocker lock(&m_mutex);
    return !m_changed.isEmpty();
}

QString SettingsStore::problem() const {
    const QMutexLocker lock(&m_mutex);
    return m_problem;
}

void SettingsStore::setChangeHandler(std::function<void()> handler) {
    const QMutexLocker lock(&m_mutex);
    m_changeHandler = std::move(handler);
}

void SettingsStore::setValueHandler(std::function<void(const QString& key)> handler) {
    const QMutexLocker lock(&m_mutex);
    m_valueHandler = std::move(handler);
}
