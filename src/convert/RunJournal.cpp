#include "convert/RunJournal.h"

#include "convert/ReplacedFile.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/reports/QuillonLib.h"
#include "support/store/SettingsFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr qint64 kMaximumSecondsBehind = 5;

QString folder() {
    return QuillonLib::shared().suppDir() + "/Running";
}

QString newNote() {
    QDir().mkpath(folder());
    return folder() + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + ".json";
}

/// Device and inode, which distinguish the file from a later one with the same name; empty: there is no file.
QString identity(const QString& path) {
    struct stat file = {};
    if (::stat(QFile::encodeName(path).constData(), &file) != 0) return {};
    return makeString("%lu:%lu", quint64{file.st_dev}, quint64{file.st_ino});
}

void cleanUp(const QString& note) {
    const auto facts = settingsfile::decoded(files::contents(note).value_or(QByteArray()));
    if (!facts) return;
    const QFileInfo output(facts->value("output").toString());
    const QDateTime lastSeen = QFileInfo(note).lastModified();
    const bool isOurs = output.isFile() && identity(output.filePath()) == facts->value("identity").toString();
    // A file that was modified after the crash was written by another program.
    if (isOurs && output.lastModified() <= lastSeen.addSecs(kMaximumSecondsBehind)) {
        logInformation("Info: deleting the unfinished output %@", output.filePath());
        QFile::remove(output.filePath());
    }
    const QString replaced = facts->value("replaced").toString();
    if (!files::fileExists(output.filePath())) {
        ReplacedFile::restore(output.filePath(), replaced);
    } else if (files::fileExists(replaced)) {
        logError("Error: the file %@ was to be replaced and is now %@", output.filePath(), replaced);
    }
    QFile::remove(facts->value("progressFile").toString());
}

}  // namespace

RunJournal::RunJournal(QString output, QString progressFile, QString replaced)
    : m_path(newNote()),
      m_lock(m_path + ".new"),
      m_facts{{"output", std::move(output)},
              {"progressFile", std::move(progressFile)},
              {"replaced", std::move(replaced)}} {
    // Rename the file only after it is locked: otherwise another instance could mistake it for one of a
    // crashed instance.
    m_lock.lock(0);
    QFile::rename(m_path + ".new", m_path);
    write();
}

void RunJournal::noteOutput() {
    m_facts.insert("identity", identity(m_facts.value("output").toString()));
    write();
}

void RunJournal::write() const {
    QFile note(m_path);
    if (note.open(QIODevice::WriteOnly)) note.write(settingsfile::encoded(m_facts));
}

RunJournal::~RunJournal() {
    QFile::remove(m_path);
}

void RunJournal::noteStillRunning() const {
    ::utimensat(AT_FDCWD, QFile::encodeName(m_path).constData(), nullptr, 0);
}

void RunJournal::cleanUpAfterCrashes() {
    const QFileInfoList notes = QDir(folder()).entryInfoList({"*.json"}, QDir::Files);
    for (const QFileInfo& note : notes) {
        FileLock lock(note.filePath());
        if (!lock.lock(0)) continue;
        cleanUp(note.filePath());
        QFile::remove(note.filePath());
    }
}
