#include "app/intake/FileIntake.h"

#include "app/intake/AudioPreselection.h"
#include "app/intake/Languages.h"
#include "settings/Keys.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/Dispatch.h"
#include "support/store/Defaults.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

FileIntake::FileIntake(Messages messages, QObject* parent)
    : QObject(parent), m_messages(messages), m_preferredLanguages(languages::preferredLanguages3Letter()) {}

FileIntake::~FileIntake() {
    cancelProbe();
    if (isScanning()) QThreadPool::globalInstance()->waitForDone();
}

void FileIntake::openFiles(const QStringList& paths) {
    const bool wasEmpty = m_importFiles.isEmpty();
    const moviefiles::Sorted sorted = moviefiles::sorted(paths);
    m_importSubtitleFiles.insert(sorted.subtitles);
    m_importFiles += sorted.movies;
    Q_EMIT filesWaitingChanged();
    // The new files follow after the running probe or the current movie.
    if (wasEmpty && !isScanning() && !m_fileInfo) addNextFile();
}

void FileIntake::clearImportFiles() {
    m_importFiles.clear();
    Q_EMIT filesWaitingChanged();
}

void FileIntake::addNextFile() {
    if (m_importFiles.isEmpty()) return;
    const QString path = m_importFiles.takeLast();
    const QString subtitle = moviefiles::subtitleFor(path, m_importSubtitleFiles);
    m_scannedFile = path;
    Q_EMIT scanningStarted(path);
    m_isCancelled = std::make_shared<std::atomic<bool>>(false);
    dispatch_async_back([self = QPointer(this), path, subtitle, isCancelled = m_isCancelled] {
        MKVFileInfo::Probe probe = MKVFileInfo::probe(QUrl::fromLocalFile(path), isCancelled.get());
        dispatch_async_main([self, path, subtitle, probe = std::move(probe)] {
            if (self) self->handleResult(path, subtitle, probe);
        });
    });
}

void FileIntake::handleResult(const QString& path, const QString& subtitle, MKVFileInfo::Probe probe) {
    m_scannedFile.clear();
    Q_EMIT scanningEnded(path);
    // A cancelled probe has no meaningful result.
    if (*m_isCancelled || childprocess::waitsAreInterrupted()) probe = {};
    if (m_messages == Messages::AtOnce) {
        for (const Verdict& verdict : verdicts::inOrderOfShowing(probe.verdicts))
            verdicts::show(verdict);
    } else {
        verdicts::deliver(probe.verdicts);
    }
    if (!probe.record) {
        Q_EMIT fileRejected(path);
        cancelAdd();
        return;
    }
    m_fileInfo = std::move(probe.record);
    if (!subtitle.isEmpty()) {
        m_fileInfo->subtitleFileURL = QUrl::fromLocalFile(subtitle);
        m_fileInfo->informationString.replace(")", "+1)");
    }
    Q_EMIT fileAccepted();
}

void FileIntake::removeSubtitleFile() {
    if (!m_fileInfo || !m_fileInfo->subtitleFileURL) return;
    m_fileInfo->subtitleFileURL.reset();
    // In front of every parenthesis there is what was added with the file.
    m_fileInfo->informationString.replace("+1)", ")");
}

void FileIntake::cancelProbe() {
    if (m_isCancelled) *m_isCancelled = true;
}

QStringList FileIntake::unconfirmedMovies() const {
    QStringList files = m_importFiles;
    if (isScanning() && !*m_isCancelled) files.append(m_scannedFile);
    if (m_fileInfo) files.append(m_fileInfo->fileURL.toLocalFile());
    return files;
}

void FileIntake::cancelAdd() {
    m_fileInfo.reset();
    if (m_importFiles.isEmpty()) {
        Q_EMIT becameIdle();
    } else {
        addNextFile();
    }
}

std::optional<qsizetype> FileIntake::bestLanguage() const {
    if (!m_fileInfo) return std::nullopt;
    return bestLanguage(*m_fileInfo);
}

std::optional<qsizetype> FileIntake::bestLanguage(const MKVFileInfo& info) const {
    return audiopreselection::bestTrack(info, audiopreselection::languages(m_preferredLanguages));
}
