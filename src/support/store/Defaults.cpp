#include "support/store/Defaults.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Text.h"

#include <QDir>
#include <QJsonValue>

#include <memory>
#include <mutex>

namespace {

// Never destroyed: threads and other static objects may still log, and so write settings, at exit.
std::unique_ptr<SettingsStore>& theStore() {
    static auto& store = *new std::unique_ptr<SettingsStore>;
    return store;
}

std::once_flag theStoreIsOpen;

bool isNumber(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Float:
        case QMetaType::Double:
            return true;
        default:
            return false;
    }
}

template <typename T>
void setOptional(const QString& key, const std::optional<T>& value) {
    setDefaultObject(key, value ? QVariant(*value) : QVariant());
}

}  // namespace

SettingsStore& standardUserDefaults() {
    std::call_once(theStoreIsOpen, [] {
        if (!theStore()) theStore() = std::make_unique<SettingsStore>(ApplicationInfo::settingsFilePath());
    });
    return *theStore();
}

void useSettingsFile(const QString& filePath) {
    std::call_once(theStoreIsOpen, [] {});
    theStore() = std::make_unique<SettingsStore>(filePath);
}

qint64 integerFromVariant(const QVariant& value) {
    if (value.typeId() == QMetaType::QString) return text::integerValue64(value.toString());
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        const double number = value.toDouble();
        constexpr double kLimit = 9.2e18;
        if (!(number > -kLimit && number < kLimit)) return 0;
        return static_cast<qint64>(number);
    }
    return isNumber(value) ? value.toLongLong() : 0;
}

float floatFromVariant(const QVariant& value) {
    if (value.typeId() == QMetaType::QString) return static_cast<float>(text::doubleValue(value.toString()));
    return isNumber(value) ? value.toFloat() : 0.0F;
}

std::optional<QString> stringFromVariant(const QVariant& value) {
    if (value.typeId() == QMetaType::QString) return value.toString();
    if (value.typeId() == QMetaType::Bool) return QString::number(value.toInt());
    if (isNumber(value)) return value.toString();
    return std::nullopt;
}

qint64 defaultInt(const QString& key) {
    return integerFromVariant(defaultObject(key));
}

float defaultFloat(const QString& key) {
    return floatFromVariant(defaultObject(key));
}

std::optional<QString> defaultString(const QString& key) {
    return stringFromVariant(defaultObject(key));
}

std::optional<QUrl> defaultURL(const QString& key) {
    const QVariant value = defaultObject(key);
    if (value.typeId() == QMetaType::QUrl) return value.toUrl();
    if (value.typeId() != QMetaType::QString) return std::nullopt;
    QString path = value.toString();
    if (path == u"~" || path.startsWith(u"~/")) path.replace(0, 1, QDir::homePath());
    return QUrl::fromLocalFile(path);
}

std::optional<QVariantList> defaultArray(const QString& key) {
    const QVariant value = defaultObject(key);
    if (value.typeId() != QMetaType::QVariantList && value.typeId() != QMetaType::QStringList)
        return std::nullopt;
    return value.toList();
}

std::optional<QVariantMap> defaultDict(const QString& key) {
    const QVariant value = defaultObject(key);
    if (value.typeId() != QMetaType::QVariantMap) return std::nullopt;
    return value.toMap();
}

QVariant defaultObject(const QString& key) {
    return standardUserDefaults().object(key);
}

void setDefaultInt(const QString& key, qint64 value) {
    setDefaultObject(key, value);
}
void setDefaultFloat(const QString& key, float value) {
    setDefaultObject(key, static_cast<double>(value));
}
void setDefaultString(const QString& key, const std::optional<QString>& value) {
    setOptional(key, value);
}
void setDefaultURL(const QString& key, const std::optional<QUrl>& value) {
    setOptional(key, value);
}
void setDefaultArray(const QString& key, const std::optional<QVariantList>& value) {
    setOptional(key, value);
}
void setDefaultDict(const QString& key, const std::optional<QVariantMap>& value) {
    setOptional(key, value);
}

void setDefaultObject(const QString& key, const QVariant& value) {
    standardUserDefaults().setObject(key, value);
}

void qn_defaults_addtoarray(const QString& key, const QVariant& object, int maximumEntries) {
    QVariantList list = defaultArray(key).value_or(QVariantList());
    list.append(object);
    while (list.size() > qMax(0, maximumEntries))
        list.removeFirst();
    setDefaultArray(key, list);
}
