#include "app/Confirmation.h"

#include "app/destinations/Destinations.h"
#include "app/destinations/OutputName.h"
#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "settings/Settings.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/store/FolderAccess.h"

#include <QDir>
#include <QFileInfo>

using Kind = DestinationItem::Kind;

namespace {

QString folderOf(const QString& path) {
    return QFileInfo(path).path();
}

}  // namespace

Confirmation::Confirmation(FileIntake& intake, JobQueue& queue, Destinations& destinations,
                           FilePanels& panels, QObject* parent)
    : QObject(parent), m_intake(intake), m_queue(queue), m_destinations(destinations), m_panels(panels) {
    connect(&intake, &FileIntake::batchEnded, this, [this] { m_all.reset(); });
}

QString Confirmation::source() const {
    return m_intake.fileInfo()->fileURL.toLocalFile();
}

QString Confirmation::besideSource() const {
    return folderOf(source()) + u'/' + outputname::outputFileName(m_intake.fileInfo()->fileName);
}

/// Of the target; begins with a slash, or is empty.
QString Confirmation::subfolder() const {
    if (!settings::KeepFolderTree.value()) return {};
    const QString folder = m_intake.drops().folderOf(source());
    return folder.isEmpty() ? QString() : u'/' + folder;
}

Kind Confirmation::selectedKind() const {
    const DestinationPopUp& popUp = m_destinations.destinationPopUp();
    const qsizetype selected = popUp.selected();
    // A separator stands for everything that is no destination.
    return selected >= 0 && selected < popUp.items().size() ? popUp.items()[selected].kind : Kind::Separator;
}

qsizetype Confirmation::selectedFolder() const {
    return m_destinations.destinationPopUp().selected() - DestinationPopUp::kFirstFolder;
}

bool Confirmation::isStillCurrent(const QString& path) const {
    return m_intake.fileInfo() && source() == path;
}

bool Confirmation::mayKeepFolders() const {
    const bool isOneOfMany = m_all || !m_intake.importFiles().isEmpty();
    return selectedKind() == Kind::Folder || (selectedKind() == Kind::Ask && isOneOfMany);
}

bool Confirmation::needsUser() const {
    switch (selectedKind()) {
        case Kind::Ask:
            return true;
        case Kind::NextToSource:
            return !m_destinations.openedFolderFor(besideSource());
        case Kind::Folder:
            return !m_destinations.problemOfFolder(selectedFolder()).isEmpty();
        default:
            return false;
    }
}

QString Confirmation::expectedOutput() const {
    if (!m_intake.fileInfo()) return {};
    switch (selectedKind()) {
        case Kind::NextToSource:
            return besideSource();
        case Kind::Folder:
            return m_destinations.storedFolder(selectedFolder()) + subfolder() + u'/' +
                   QFileInfo(besideSource()).fileName();
        default:
            return {};
    }
}

void Confirmation::add(qsizetype audioTrack) {
    if (!m_intake.fileInfo()) return;
    m_audioTrack = audioTrack;
    switch (selectedKind()) {
        case Kind::Ask:
            askForDestination();
            return;
        case Kind::NextToSource:
            whenSourceFolderIsOpen([this] { addToTarget(); });
            return;
        case Kind::Folder:
            addToTarget();
            return;
        default:
            Q_EMIT message(Texts::tr("Please choose a destination."));
    }
}

void Confirmation::addAll(qsizetype audioTrack) {
    if (!m_intake.fileInfo()) return;
    switch (selectedKind()) {
        case Kind::Ask:
            m_panels.chooseFolder(FilePanels::Over::MainWindow, folderOf(source()),
                                  [this, audioTrack, source = source()](const QString& folder) {
                                      if (isStillCurrent(source)) beginAll(folder, audioTrack);
                                  });
            return;
        case Kind::NextToSource:
            whenSourceFolderIsOpen([this, audioTrack] { beginAll({}, audioTrack); });
            return;
        case Kind::Folder:
            beginAll({}, audioTrack);
            return;
        default:
            Q_EMIT message(Texts::tr("Please choose a destination."));
    }
}

void Confirmation::beginAll(const QString& folder, qsizetype audioTrack) {
    All all;
    all.folder = folder;
    all.firstMovie = source();
    all.firstAudioTrack = audioTrack;
    for (qsizetype i = 0; i < m_queue.count(); ++i) {
        const ConversionJob* job = m_queue.job(i);
        if (statusNotFinished(job->state())) all.sources.insert(job->fileInfo().fileURL.toLocalFile());
    }
    m_all = std::move(all);
    m_intake.beginBatch();
}

void Confirmation::addNext(qsizetype audioTrack) {
    const QString name = m_intake.fileInfo()->fileName;
    if (m_all->sources.contains(source())) {
        m_intake.addToBatchMessages(
            verdicts::toolProblem(Texts::tr("“%1” is in the queue already and was left out.").arg(name)));
        m_intake.cancelAdd();
        return;
    }
    m_audioTrack = source() == m_all->firstMovie ? m_all->firstAudioTrack : audioTrack;
    addToTarget();
}

void Confirmation::askForDestination() {
    // The source cannot be replaced: do not offer its name.
    const QString beside = besideSource();
    const QString offered =
        outputname::isSameFile(beside, source()) ? m_queue.uniqueDestination(beside) : beside;
    m_panels.saveFile(folderOf(source()), QFileInfo(offered).fileName(), outputname::outputExtension(),
                      [this, source = source()](const QString& path) {
                          if (!isStillCurrent(source)) return;
                          if (outputname::isSameFile(path, source)) {
                              alert_apptitled(text::localized(outputname::kOverwritesSource),
                                              Texts::tr("D'oh"));
                              return;
                          }
                          // The panel has already asked whether to replace an existing file.
                          const bool replaces = QFileInfo::exists(path) && !m_queue.willWrite(path);
                          addJob(replaces ? path : m_queue.uniqueDestination(path), {}, replaces);
                      });
}

void Confirmation::whenSourceFolderIsOpen(const std::function<void()>& then) {
    if (m_destinations.openedFolderFor(besideSource())) {
        then();
        return;
    }
    alert_apptitled(
        Texts::tr(
            "You've chosen the 'Next to' default destination for converted MP4 files. Since Apple's SandBox limits access to your files you have to open the folder that contains all MKV files that you want to convert"),
        Texts::tr("OK"));
    m_panels.chooseFolder(
        FilePanels::Over::MainWindow, folderOf(source()),
        [this, then, source = source()](const QString& path) {
            m_destinations.addOpenedFolder(path);
            if (!isStillCurrent(source)) return;
            if (m_destinations.openedFolderFor(besideSource())) {
                then();
            } else {
                alert_apptitled(Texts::tr("You did not seem to select a folder that contains your MKV."),
                                Texts::tr("Cancel"));
            }
        });
}

std::optional<Confirmation::Target> Confirmation::openTarget(QString& problem) const {
    if (m_all && !m_all->folder.isEmpty()) return Target{m_all->folder, {}};
    if (selectedKind() == Kind::NextToSource) {
        const auto folder = m_destinations.openedFolderFor(besideSource());
        if (!folder) {
            problem = Texts::tr("The folder of the movie was not opened.");
            return std::nullopt;
        }
        const bool isOpen = folder->securityScoped && folderaccess::startAccessing(folder->path);
        return Target{folderOf(source()), isOpen ? folder->path : QString()};
    }
    if (selectedKind() != Kind::Folder) {
        problem = Texts::tr("Please choose a destination.");
        return std::nullopt;
    }
    // A folder on a disk that was unplugged meanwhile is reported to the user; it is not a program error.
    if (const QString reason = m_destinations.problemOfFolder(selectedFolder()); !reason.isEmpty()) {
        problem =
            Texts::tr("The destination folder can not be used now. %1 Please choose another destination.")
                .arg(reason);
        return std::nullopt;
    }
    const QString folder = m_destinations.openFolder(selectedFolder());
    return Target{folder, folder};
}

void Confirmation::addToTarget() {
    QString problem;
    const auto target = openTarget(problem);
    if (!target) {
        refuse(problem);
        return;
    }
    const QString below = mayKeepFolders() ? subfolder() : QString();
    // A folder that is gone is not made again: its volume may be away.
    if (!below.isEmpty() && (!QFileInfo(target->folder).isDir() || !QDir().mkpath(target->folder + below))) {
        if (!target->openedFolder.isEmpty()) folderaccess::stopAccessing(target->openedFolder);
        refuse(text::localized(JobQueue::kNotWriteable));
        return;
    }
    const QString wanted = target->folder + below + u'/' + QFileInfo(besideSource()).fileName();
    if (m_all && QFileInfo::exists(wanted) && !m_all->wanted.contains(wanted) &&
        !outputname::isSameFile(wanted, source())) {
        m_intake.addToBatchMessages(verdicts::toolProblem(
            Texts::tr("The folder already had an output of “%1”: the new one has another name.")
                .arg(m_intake.fileInfo()->fileName)));
    }
    if (m_all) m_all->wanted.insert(wanted);
    addJob(m_queue.uniqueDestination(wanted), target->openedFolder, false);
}

void Confirmation::addJob(const QString& output, const QString& openedFolder, bool mayReplace) {
    MKVFileInfo info = *m_intake.fileInfo();
    if (!openedFolder.isEmpty()) info.securityURL = FileUrl::fromLocalFile(openedFolder);
    auto job = std::make_unique<ConversionJob>(m_queue, std::move(info), m_audioTrack);
    job->setDestination(output);
    job->presetSpeedInfo();
    job->setMayReplaceDestination(mayReplace);
    const ConversionJob* above = lastOfAll();
    // Before it is added: then the next movie may come at once.
    if (m_all) {
        m_all->jobs.append(job.get());
        m_all->sources.insert(source());
    }
    if (m_queue.addJob(std::move(job), above)) return;
    if (m_all) m_all->sources.remove(source());
    refuse(text::localized(JobQueue::kNotWriteable));
}

/// The last job of addAll() that is still queued; null: none.
const ConversionJob* Confirmation::lastOfAll() {
    if (!m_all) return nullptr;
    while (!m_all->jobs.isEmpty() && m_queue.indexOf(m_all->jobs.last()) < 0)
        m_all->jobs.removeLast();
    return m_all->jobs.isEmpty() ? nullptr : m_all->jobs.last();
}

/// The movie is not queued.
void Confirmation::refuse(const QString& reason) {
    const QString warning =
        makeString("%@\n\n%@", reason,
                   Texts::tr("The movie “%1” stays on the sheet.").arg(m_intake.fileInfo()->fileName));
    if (m_all && selectedKind() == Kind::NextToSource) {
        m_intake.addToBatchMessages(verdicts::toolProblem(warning));
        m_intake.setAside();
        return;
    }
    m_intake.endBatch();
    showInTurn([warning] { alert_apptitled(warning, Texts::tr("OK")); }, warning);
}
