#include "support/store/SettingsStore.h"

#include "support/base/FileLock.h"
#include "support/base/Files.h"
#include "support/base/Texts.h"
#include "support/store/SettingsFile.h"

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

QString lockPath(const QString& filePath) {
    return filePath + ".lock";
}

void removeUnfinished(const QString& filePath) {
    if (settingsfile::unfinishedFiles(filePath).isEmpty()) return;
    FileLock lock(lockPath(filePath));
    if (!lock.lock(0)) return;  // Another process writes.
    const QStringList unfinished = settingsfile::unfinishedFiles(filePath);
    for (const QString& file : unfinished)
        QFile::remove(file);
}

}  // namespace

SettingsStore::SettingsStore(QString filePath) : m_filePath(std::move(filePath)) {
    removeUnfinished(m_filePath);
    switch (settingsfile::read(m_filePath, m_stored)) {
        case settingsfile::ReadResult::Read:
        case settingsfile::ReadResult::Missing:
            break;
        case settingsfile::ReadResult::Unreadable:
            m_unreadable = true;
            m_problem =
                Texts::tr(
                    "The settings in '%1' can't be read. Default settings are used and changes are not saved.")
                    .arg(m_filePath);
            break;
        case settingsfile::ReadResult::Damaged:
            keepAside();
            break;
    }
}

void SettingsStore::keepAside() {
    const QString aside = files::uniqueFile(files::withoutExtension(m_filePath) + "-damaged.json");
    if (QFile::rename(m_filePath, aside)) {
        m_problem = Texts::tr("The settings file was damaged. It is kept as '%1'; default settings are used.")
                        .arg(aside);
    } else {
        m_unreadable = true;
        m_problem =
            Texts::tr(
                "The settings file '%1' is damaged. Default settings are used and changes are not saved.")
                .arg(m_filePath);
    }
}

QVariant SettingsStore::object(const QString& key) const {
    const QMutexLocker lock(&m_mutex);
    for (const QVariantMap* place : {&m_overrides, &m_stored, &m_defaults}) {
        if (const auto found = place->constFind(key); found != place->cend()) return *found;
    }
    return {};
}

QVariantMap SettingsStore::objects() const {
    const QMutexLocker lock(&m_mutex);
    QVariantMap objects = m_defaults;
    objects.insert(m_stored);
    objects.insert(m_overrides);
    return objects;
}

QVariant SettingsStore::storedObject(const QString& key) const {
    const QMutexLocker lock(&m_mutex);
    return m_stored.value(key);
}

void SettingsStore::setObject(const QString& key, const QVariant& value) {
    set({{key, value}}, false);
}

void SettingsStore::setTogether(const QVariantMap& values) {
    set(values, true);
}

void SettingsStore::set(const QVariantMap& values, bool evenIfSame) {
    std::function<void(Urgency)> changeHandler;
    std::function<void(const QString&)> valueHandler;
    QStringList differing;
    {
        const QMutexLocker lock(&m_mutex);
        const bool hadChanges = !m_changed.isEmpty();
        for (auto entry = values.cbegin(); entry != values.cend(); ++entry) {
            const QVariant& value = entry.value();
            const auto found = m_stored.constFind(entry.key());
            const bool same =
                found == m_stored.cend()
                    ? !value.isValid()
                    : value.isValid() && found->metaType() == value.metaType() && *found == value;
            if (!same || evenIfSame) m_changed.insert(entry.key());
            if (same) continue;
            differing.append(entry.key());
            if (value.isValid()) {
                m_stored.insert(entry.key(), value);
            } else {
                m_stored.remove(entry.key());
            }
        }
        if (!hadChanges && !m_changed.isEmpty()) changeHandler = m_changeHandler;
        valueHandler = m_valueHandler;
    }
    if (changeHandler) changeHandler(Urgency::Later);
    if (!valueHandler) return;
    for (const QString& key : std::as_const(differing))
        valueHandler(key);
}

void SettingsStore::readAgain() {
    if (hasChanges()) {
        synchronise();
        return;
    }
    QStringList foreign;
    std::function<void(const QString&)> valueHandler;
    {
        const QMutexLocker lock(&m_mutex);
        QVariantMap read;
        if (!m_changed.isEmpty() || settingsfile::read(m_filePath, read) != settingsfile::ReadResult::Read)
            return;
        valueHandler = m_valueHandler;
        if (valueHandler) foreign = differingKeys(m_stored, read);
        m_stored = read;
    }
    for (const QString& key : std::as_const(foreign))
        valueHandler(key);
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
    QStringList foreign;  // Keys that another process changed.
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
    FileLock fileLock(lockPath(m_filePath));
    if (fileLock.error() != 0) return cannotSave(qt_error_string(fileLock.error()));
    if (!fileLock.lock(kLockWaitMilliseconds)) {
        m_problem = Texts::tr("The settings can't be saved: '%1' can't be locked.").arg(m_filePath);
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
                Texts::tr("The settings in '%1' can't be read, so changes are not saved.").arg(m_filePath);
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
    if (!settingsfile::write(m_filePath, merged, error)) return cannotSave(error);
    m_stored = merged;
    m_changed.clear();
    return true;
}

bool SettingsStore::cannotSave(const QString& reason) {
    m_problem = Texts::tr("The settings can't be saved in '%1': %2").arg(m_filePath, reason);
    return false;
}

bool SettingsStore::hasChanges() const {
    const QMutexLocker lock(&m_mutex);
    return !m_changed.isEmpty();
}

QString SettingsStore::problem() const {
    const QMutexLocker lock(&m_mutex);
    return m_problem;
}

void SettingsStore::setChangeHandler(std::function<void(Urgency)> handler) {
    const QMutexLocker lock(&m_mutex);
    m_changeHandler = std::move(handler);
}

void SettingsStore::setValueHandler(std::function<void(const QString& key)> handler) {
    const QMutexLocker lock(&m_mutex);
    m_valueHandler = std::move(handler);
}

void SettingsStore::askToSaveSoon() const {
    std::function<void(Urgency)> handler;
    {
        const QMutexLocker lock(&m_mutex);
        if (!m_changed.isEmpty()) handler = m_changeHandler;
    }
    if (handler) handler(Urgency::Soon);
}
