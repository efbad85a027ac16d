#include "support/store/SettingsFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QUrl>

#include <cmath>

namespace settingsfile {

namespace {

QJsonValue toJson(const QVariant& value);
QVariant fromJson(const QJsonValue& value);

QJsonObject wrapped(const char* mark, const QJsonValue& value) {
    return {{QString::fromLatin1(mark), value}};
}

QJsonObject toJsonObject(const QVariantMap& map) {
    QJsonObject object;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        object.insert(it.key(), toJson(it.value()));
    return object;
}

QVariantMap fromJsonObject(const QJsonObject& object) {
    QVariantMap map;
    for (auto it = object.begin(); it != object.end(); ++it)
        map.insert(it.key(), fromJson(it.value()));
    return map;
}

QJsonValue toJson(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::QByteArray:
            return wrapped("$data", QString::fromLatin1(value.toByteArray().toBase64()));
        case QMetaType::QUrl:
            return wrapped("$url", value.toUrl().toString(QUrl::FullyEncoded));
        case QMetaType::QDateTime:
            return wrapped("$date", value.toDateTime().toUTC().toString(Qt::ISODateWithMs));
        case QMetaType::Float:
        case QMetaType::Double: {
            // JSON does not distinguish 100.0 from 100, and cannot represent NaN and infinity.
            const double number = value.toDouble();
            if (!std::isfinite(number) || std::trunc(number) == number)
                return wrapped("$real", QString::number(number, 'g', 17));
            return number;
        }
        case QMetaType::QVariantMap: {
            const QJsonObject object = toJsonObject(value.toMap());
            const bool looksWrapped = object.size() == 1 && object.begin().key().startsWith(u'$');
            return looksWrapped ? wrapped("$dictionary", object) : object;
        }
        case QMetaType::QStringList:
        case QMetaType::QVariantList: {
            QJsonArray array;
            const QVariantList list = value.toList();
            for (const QVariant& element : list)
                array.append(toJson(element));
            return array;
        }
        default:
            return QJsonValue::fromVariant(value);
    }
}

QVariant fromJson(const QJsonValue& value) {
    if (value.isArray()) {
        QVariantList list;
        const QJsonArray array = value.toArray();
        for (const auto& element : array)
            list.append(fromJson(element));
        return list;
    }
    if (!value.isObject()) return value.toVariant();
    const QJsonObject object = value.toObject();
    if (object.size() == 1) {
        const QString mark = object.begin().key();
        const QJsonValue inner = object.begin().value();
        if (mark == "$data") return QByteArray::fromBase64(inner.toString().toLatin1());
        if (mark == "$url") return QUrl(inner.toString());
        if (mark == "$date") return QDateTime::fromString(inner.toString(), Qt::ISODateWithMs);
        if (mark == "$real") return inner.toString().toDouble();
        if (mark == "$dictionary") return fromJsonObject(inner.toObject());
    }
    return fromJsonObject(object);
}

}  // namespace

QByteArray encoded(const QVariantMap& settings) {
    return QJsonDocument(toJsonObject(settings)).toJson();
}

std::optional<QVariantMap> decoded(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) return std::nullopt;
    return fromJsonObject(document.object());
}

ReadResult read(const QString& path, QVariantMap& settings) {
    QFile file(path);
    if (!file.exists()) return ReadResult::Missing;
    if (!file.open(QIODevice::ReadOnly)) return ReadResult::Unreadable;
    auto map = decoded(file.readAll());
    if (file.error() != QFileDevice::NoError) return ReadResult::Unreadable;
    if (!map) return ReadResult::Damaged;
    settings = std::move(*map);
    return ReadResult::Read;
}

bool write(const QString& path, const QVariantMap& settings, QString& error) {
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(encoded(settings)) < 0 || !file.commit()) {
        error = file.errorString();
        return false;
    }
    return true;
}

}  // namespace settingsfile
