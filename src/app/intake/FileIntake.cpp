#include "app/intake/FileIntake.h"

#include "app/intake/AudioPreselection.h"
#include "app/intake/Languages.h"
#include "settings/Keys.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/Dispatch.h"
#include "support/store/Defaults.h"

#include <QCollator>
#include <QCoreApplication>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// The length of the folders with which all paths begin.
qsizetype commonFolders(const QStringList& paths) {
    QStringView common = paths.first();
    for (const QString& path : paths)
        common.truncate(std::ranges::mismatch(common, path).in1 - common.begin());
    return common.lastIndexOf(u'/') + 1;
}

/// Orders paths as people read them, from the end: the last one is taken first.
void sortForTaking(QStringList& paths) {
    // The language "C" has no numeric order.
    QCollator collator(QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // A key takes time in proportion to its text; the folders that all have in common decide nothing.
    const qsizetype common = commonFolders(paths);
    std::vector<std::pair<QCollatorSortKey, QString>> keyed;
    keyed.reserve(static_cast<size_t>(paths.size()));
    for (const QString& path : std::as_const(paths))
        keyed.emplace_back(collator.sortKey(path.sliced(common)), path);
    std::ranges::stable_sort(keyed, [](const auto& a, const auto& b) { return b.first < a.first; });
    std::ranges::transform(keyed, paths.begin(), [](const auto& entry) { return entry.second; });
}

}  // namespace

FileIntake::FileIntake(Messages messages, QObject* parent)
    : QObject(parent), m_messages(messages), m_preferredLanguages(languages::preferredLanguages3Letter()) {}

FileIntake::~FileIntake() {
    cancelProbe();
    cancelExpected();
    if (m_running > 0) QThreadPool::globalInstance()->waitForDone();
}

void FileIntake::openFiles(const QStringList& paths, const QStringList& folders, Drops::Origin origin) {
    const bool wasEmpty = m_importFiles.isEmpty();
    const moviefiles::Sorted sorted = moviefiles::sorted(paths);
    m_importSubtitleFiles.insert(sorted.subtitles);
    m_drops.add(sorted.movies, folders, origin);
    m_importFiles = m_batch ? sorted.movies + m_importFiles : m_importFiles + sorted.movies;
    Q_EMIT filesWaitingChanged();
    // The new files follow after the running probe or the current movie.
    if (wasEmpty && !isScanning() && !m_fileInfo) addNextFile();
}

void FileIntake::clearImportFiles() {
    m_importFiles.clear();
    m_heldInfo.reset();
    if (m_batch) m_batch->waiting = 0;
    Q_EMIT filesWaitingChanged();
}

FileIntake::Unconfirmed FileIntake::cancelAll() {
    const QStringList movies = unconfirmedMovies();
    const Unconfirmed dropped{subtitleFiles() + movies, m_drops.folders(), static_cast<int>(movies.size())};
    clearImportFiles();
    isScanning() ? cancelProbe() : cancelAdd();
    return dropped;
}

void FileIntake::stop() {
    m_batch.reset();
    clearImportFiles();
    cancelProbe();
    cancelExpected();
}

void FileIntake::addNextFile() {
    if (m_importFiles.isEmpty()) return;
    const QString path = m_importFiles.takeLast();
    if (m_batch) --m_batch->waiting;
    if (m_heldInfo && m_heldInfo->fileURL.toLocalFile() == path) {
        m_fileInfo = std::exchange(m_heldInfo, std::nullopt);
        Q_EMIT scanningStarted(path);
        Q_EMIT scanningEnded(path);
        Q_EMIT fileAccepted();
        return;
    }
    const bool isExpected =
        m_expected && m_expected->path == path && m_expected->stamp == FileStamp::of(path);
    if (!isExpected) cancelExpected();
    m_scan = isExpected ? std::exchange(m_expected, nullptr) : startScan(path);
    m_scan->subtitle = moviefiles::subtitleFor(path, m_importSubtitleFiles);
    Q_EMIT scanningStarted(path);
    if (m_scan->result) QMetaObject::invokeMethod(this, &FileIntake::handleResult, Qt::QueuedConnection);
}

void FileIntake::expect(const QString& path) {
    if (m_expected && m_expected->path == path) return;
    cancelExpected();
    m_expected = startScan(path);
}

std::shared_ptr<FileIntake::Scan> FileIntake::startScan(const QString& path) {
    auto scan = std::make_shared<Scan>();
    scan->path = path;
    scan->stamp = FileStamp::of(path);
    ++m_running;
    dispatch_async_back([self = QPointer(this), scan] {
        MKVFileInfo::Probe probe = MKVFileInfo::probe(FileUrl::fromLocalFile(scan->path), &scan->isCancelled);
        dispatch_async_main([self, scan, probe = std::move(probe)] {
            scan->result = probe;
            if (!self) return;
            --self->m_running;
            if (scan == self->m_scan) self->handleResult();
        });
    });
    return scan;
}

void FileIntake::handleResult() {
    const auto scan = std::exchange(m_scan, nullptr);
    const QString& path = scan->path;
    MKVFileInfo::Probe probe = std::move(*scan->result);
    Q_EMIT scanningEnded(path);
    // A cancelled probe has no meaningful result.
    if (scan->isCancelled || childprocess::waitsAreInterrupted()) probe = {};
    if (m_batch) {
        for (const Verdict& verdict : verdicts::inOrderOfShowing(probe.verdicts))
            m_batch->messages.add(QFileInfo(path).fileName(), verdict);
    } else if (m_messages == Messages::AtOnce) {
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
    if (!scan->subtitle.isEmpty()) {
        m_fileInfo->subtitleFileURL = FileUrl::fromLocalFile(scan->subtitle);
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
    if (m_scan) m_scan->isCancelled = true;
}

void FileIntake::cancelExpected() {
    if (m_expected) m_expected->isCancelled = true;
    m_expected.reset();
}

bool FileIntake::hasUnconfirmedMovies() const {
    return !m_importFiles.isEmpty() || (isScanning() && !m_scan->isCancelled) || m_fileInfo;
}

QStringList FileIntake::unconfirmedMovies() const {
    QStringList files = m_importFiles;
    if (isScanning() && !m_scan->isCancelled) files.append(m_scan->path);
    if (m_fileInfo) files.append(m_fileInfo->fileURL.toLocalFile());
    return files;
}

void FileIntake::beginBatch() {
    if (!m_fileInfo || m_batch) return;
    m_importFiles.append(m_fileInfo->fileURL.toLocalFile());
    m_heldInfo = std::exchange(m_fileInfo, std::nullopt);
    sortForTaking(m_importFiles);
    Batch batch;
    batch.waiting = m_importFiles.size();
    m_batch = std::move(batch);
    addNextFile();
}

void FileIntake::endBatch() {
    if (!m_batch) return;
    Batch batch = std::move(*m_batch);
    m_batch.reset();
    batch.messages.show();
    Q_EMIT batchEnded();
}

qsizetype FileIntake::batchCount() const {
    if (!m_batch) return 0;
    return m_batch->waiting + (isScanning() || m_fileInfo ? 1 : 0);
}

void FileIntake::addToBatchMessages(const Verdict& message) {
    if (m_batch && m_fileInfo) m_batch->messages.add(m_fileInfo->fileName, message);
}

void FileIntake::setAside() {
    m_importFiles.prepend(m_fileInfo->fileURL.toLocalFile());
    cancelAdd();
}

void FileIntake::cancelAdd() {
    m_fileInfo.reset();
    if (m_batch && m_batch->waiting == 0) endBatch();
    if (m_importFiles.isEmpty()) {
        m_drops.clear();
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
