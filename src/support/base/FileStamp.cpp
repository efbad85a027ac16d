#include "support/base/FileStamp.h"

#include <QDateTime>
#include <QFile>
#include <QList>

#include <sys/stat.h>

namespace {

constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

std::optional<FileStamp> FileStamp::of(const QString& path) {
    struct stat file = {};
    if (::stat(QFile::encodeName(path).constData(), &file) != 0) return std::nullopt;
    return FileStamp{file.st_size, file.st_mtim.tv_sec * kNanosecondsPerSecond + file.st_mtim.tv_nsec};
}

qint64 FileStamp::secondsAgo() const {
    return QDateTime::currentSecsSinceEpoch() - changed / kNanosecondsPerSecond;
}

QByteArray FileStamp::toText() const {
    return QByteArray::number(size) + ' ' + QByteArray::number(changed);
}

std::optional<FileStamp> FileStamp::fromText(const QByteArray& text) {
    const QList<QByteArray> numbers = text.split(' ');
    if (numbers.size() != 2) return std::nullopt;
    bool isSize = false;
    bool isTime = false;
    const FileStamp stamp{numbers[0].toLongLong(&isSize), numbers[1].toLongLong(&isTime)};
    return isSize && isTime ? std::optional(stamp) : std::nullopt;
}

bool FileStamp::operator==(const FileStamp& other) const {
    const bool isCut = changed % kNanosecondsPerSecond == 0 || other.changed % kNanosecondsPerSecond == 0;
    const qint64 unit = isCut ? kNanosecondsPerSecond : 1;
    return size == other.size && changed / unit == other.changed / unit;
}
