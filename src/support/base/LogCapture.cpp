#include "support/base/LogCapture.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QStringConverter>

#include <array>
#include <memory>
#include <syslog.h>

namespace logcapture {

namespace {

std::unique_ptr<QFile> logfileHandle;
int minimumLogType = 0;

QString levelName(int level) {
    constexpr std::array kNames = {"Emergency", "Alert",  "Critical", "Error",
                                   "Warning",   "Notice", "Info",     "Debug"};
    const bool known = level >= 0 && level < static_cast<int>(kNames.size());
    return known ? QString::fromLatin1(kNames[static_cast<size_t>(level)]) : QString();
}

/// Keeps the newest `size` bytes. Returns false if writing failed.
bool shrinkToTail(const QString& path, qint64 size) {
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || !file.seek(file.size() - size)) return false;
    const QByteArray tail = file.readAll();
    return file.seek(0) && file.write(tail) == tail.size() && file.resize(size) && file.flush();
}

}  // namespace

bool shrink(const QString& path, quint64 maximumSize) {
    const QFile existing(path);
    if (!existing.exists() || maximumSize == 0 || static_cast<quint64>(existing.size()) <= maximumSize)
        return true;
    return shrinkToTail(path, static_cast<qint64>(maximumSize));
}

bool open(const QString& path, int minimumLevel) {
    minimumLogType = minimumLevel;
    logfileHandle = std::make_unique<QFile>(path);
    if (logfileHandle->open(QIODevice::ReadWrite)) return true;
    logfileHandle.reset();
    return false;
}

void write(int level, const QString& message) {
    if (!logfileHandle || level > minimumLogType) return;
    const QDateTime now = QDateTime::currentDateTime();
    const QString date = QLocale(QLocale::English, QLocale::UnitedStates).toString(now.date(), "MMM dd");
    const QString time = QLocale().toString(now.time(), QLocale::ShortFormat);
    const QString line =
        makeString("%@ %@  %@[%i] <%@>: %@\n", date, time, ApplicationInfo::name(),
                   static_cast<int>(QCoreApplication::applicationPid()), levelName(level), message);
    QStringEncoder encoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QByteArray bytes = encoder(line);
    if (encoder.hasError()) {
        ::syslog(LOG_USER | LOG_CRIT, "could not open create data from string '%s' for log",
                 line.toUtf8().constData());
        return;
    }
    if (logfileHandle->seek(logfileHandle->size())) {
        logfileHandle->write(bytes);
        logfileHandle->flush();
    }
}

}  // namespace logcapture
