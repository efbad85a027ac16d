#include "support/store/SettingsFile.h"

#include "support/base/FileSteps.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace settingsfile {

namespace {

constexpr const char* kUnfinished = ".new";

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

/// The file itself where the path is a link to it.
QString targetOf(const QString& path) {
    const QString target = QFileInfo(path).canonicalFilePath();
    return target.isEmpty() ? path : target;
}

/// Writes a new file with the permissions of `old`, if that exists. Returns an errno, 0: on the disk.
int writeNew(const QString& path, const QByteArray& bytes, const QString& old) {
    const int file = ::open(QFile::encodeName(path).constData(),
                            O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (file < 0) return errno;
    struct stat before = {};
    if (::stat(QFile::encodeName(old).constData(), &before) == 0) ::fchmod(file, before.st_mode & 07777U);
    const int error = filesteps::writeAndSync(file, bytes);
    return ::close(file) == 0 || error != 0 ? error : errno;
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
    const QString target = targetOf(path);
    const QString unfinished = target + kUnfinished;
    QDir().mkpath(QFileInfo(target).path());
    int failure = writeNew(unfinished, encoded(settings), target);
    if (failure == 0) failure = filesteps::rename(unfinished, target);
    if (failure == 0) {
        filesteps::syncFolder(QFileInfo(target).path());
        return true;
    }
    filesteps::remove(unfinished);
    error = qt_error_string(failure);
    return false;
}

QStringList unfinishedFiles(const QString& path) {
    // The second were made by earlier versions. A name without capitals may be a copy of the user's.
    static const QRegularExpression kEndings("\\.(?:new|(?=.*[A-Z])[A-Za-z]{6})$");
    const QFileInfo target(targetOf(path));
    QStringList found;
    const QStringList names = target.dir().entryList({target.fileName() + ".*"}, QDir::Files | QDir::Hidden);
    for (const QString& name : names) {
        if (kEndings
                .match(name, target.fileName().size(), QRegularExpression::NormalMatch,
                       QRegularExpression::AnchorAtOffsetMatchOption)
                .hasMatch())
            found.append(target.dir().filePath(name));
    }
    return found;
}

}  // namespace settingsfile
