#include "convert/RunJournal.h"

#include "convert/ReplacedFile.h"
#include "support/Files.h"
#include "support/Log.h"
#include "support/QuillonLib.h"
#include "support/SettingsFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr qint64 kMostSecondsBehind = 5;

QString folder() {
    return QuillonLib::shared().suppDir() + "/Running";
}

QString newNote() {
    QDir().mkpath(folder());
    return folder() + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + ".json";
}

void cleanUp(const QString& note) {
    const auto facts = settingsfile::decoded(files::contents(note).value_or(QByteArray()));
    if (!facts) return;
    const QFileInfo output(facts->value("output").toString());
    const QDateTime lastSeen = QFileInfo(note).lastModified();
    // What was written after the application died is not what it wrote.
    if (output.isFile() && output.lastModified() <= lastSeen.addSecs(kMostSecondsBehind)) {
        logInformation("Info: deleting the unfinished output %@", output.filePath());
        QFile::remove(output.filePath());
    }
    if (!files::fileExists(output.filePath()))
        ReplacedFile::restore(output.filePath(), facts->value("replaced").toString());
    QFile::remove(facts->value("progressFile").toString());
}

}  // namespace

RunJournal::RunJournal(QString output, QString progressFile, QString replaced)
    : m_path(newNote()), m_lock(m_path) {
    m_lock.lock(0);
    QFile note(m_path);
    if (!note.open(QIODevice::WriteOnly)) return;
    note.write(settingsfile::encoded({{"output", std::move(output)},
                                      {"progressFile", std::move(progressFile)},
                                      {"replaced", std::move(replaced)}}));
}

RunJournal::~RunJournal() {
    QFile::remove(m_path);
}

void RunJournal::keepUp() const {
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
