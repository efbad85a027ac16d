#include "app/AddSheet.h"

#include "app/destinations/Destinations.h"
#include "app/destinations/OutputName.h"
#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "convert/plan/PlanText.h"
#include "settings/Changes.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/base/Files.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"

#include <QFileInfo>

namespace {

QString folderOf(const QString& path) {
    return QFileInfo(path).path();
}

}  // namespace

AddSheet::AddSheet(FileIntake& intake, JobQueue& queue, Destinations& destinations, FilePanels& panels,
                   QObject* parent)
    : QObject(parent), m_intake(intake), m_queue(queue), m_destinations(destinations), m_panels(panels) {
    connect(&intake, &FileIntake::scanningStarted, this, &AddSheet::showScanning);
    connect(&intake, &FileIntake::scanningEnded, this, &AddSheet::changed);
    connect(&intake, &FileIntake::fileAccepted, this, &AddSheet::showAccepted);
    connect(&intake, &FileIntake::filesWaitingChanged, this, &AddSheet::changed);
    connect(&intake, &FileIntake::becameIdle, this, [this] {
        m_path.clear();
        hide();
        Q_EMIT changed();
    });
    connect(&queue, &JobQueue::pausedChanged, this, &AddSheet::changed);
    // Nearly every setting of a conversion shows in the plan.
    connect(&settings::Changes::shared(), &settings::Changes::changed, this, &AddSheet::planChanged);
}

bool AddSheet::isScanning() const {
    return m_intake.isScanning();
}

qsizetype AddSheet::waitingCount() const {
    return m_intake.importFiles().size();
}

QString AddSheet::informationString() const {
    return m_intake.fileInfo() ? m_intake.fileInfo()->informationString : QString();
}

QStringList AddSheet::audioItems() const {
    QStringList items;
    if (!m_intake.fileInfo()) return items;
    for (const AudioEntry& entry : m_intake.fileInfo()->audioTrackInformation)
        items.append(entry.text);
    return items;
}

QStringList AddSheet::audioLabels() const {
    QStringList labels;
    for (qsizetype i = 0; i < audioItems().size(); ++i)
        labels.append(plantext::audioLabel(*m_intake.fileInfo(), i));
    return labels;
}

void AddSheet::selectAudio(qsizetype index) {
    m_selectedAudio = index;
    Q_EMIT planChanged();
}

std::optional<ConversionPlan> AddSheet::plan() const {
    if (!m_intake.fileInfo()) return std::nullopt;
    return makePlan(*m_intake.fileInfo(), m_selectedAudio, ConversionSettings::current());
}

void AddSheet::removeSubtitleFile() {
    m_intake.removeSubtitleFile();
    Q_EMIT changed();
}

void AddSheet::setTopConstraint(double height) {
    if (m_topConstraint == height) return;
    m_topConstraint = height;
    Q_EMIT topConstraintChanged(height);
}

void AddSheet::showScanning(const QString& path) {
    m_path = path;
    m_destinations.rebuildDestinationPopUp();
    Q_EMIT changed();
    setTopConstraint(kShown);
}

void AddSheet::showAccepted() {
    m_selectedAudio = m_intake.bestLanguage().value_or(0);
    m_destinations.rebuildDestinationPopUp();
    Q_EMIT changed();
    if (settings::AutoAdd.value()) addToQueue();
}

void AddSheet::cancelAdd() {
    if (m_intake.isScanning()) {
        m_intake.cancelProbe();
    } else {
        m_intake.cancelAdd();
    }
}

void AddSheet::cancelAll() {
    m_intake.clearImportFiles();
    Q_EMIT changed();
    cancelAdd();
}

bool AddSheet::isStillCurrent(const QString& path) const {
    return m_intake.fileInfo() && m_intake.fileInfo()->fileURL.toLocalFile() == path;
}

void AddSheet::addToQueue() {
    if (!m_intake.fileInfo()) return;
    const DestinationPopUp& popUp = m_destinations.destinationPopUp();
    const qsizetype selected = popUp.selected();
    if (selected < 0 || selected >= popUp.items().size()) {
        Q_EMIT message(Texts::tr("Please choose a destination."));
        return;
    }
    switch (popUp.items()[selected].kind) {
        case DestinationItem::Kind::Ask:
            askForDestination();
            return;
        case DestinationItem::Kind::NextToSource:
            goNextToSource(true);
            return;
        case DestinationItem::Kind::Folder:
            goToStoredFolder(selected - DestinationPopUp::kFirstFolder);
            return;
        case DestinationItem::Kind::Separator:
        case DestinationItem::Kind::Choose:
        case DestinationItem::Kind::Clear:
            return;
    }
}

void AddSheet::askForDestination() {
    const QString source = m_intake.fileInfo()->fileURL.toLocalFile();
    m_panels.saveFile(folderOf(source), outputname::outputFileName(m_intake.fileInfo()->fileName),
                      outputname::outputExtension(), [this, source](const QString& path) {
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

void AddSheet::goNextToSource(bool mayAsk) {
    const QString source = m_intake.fileInfo()->fileURL.toLocalFile();
    const QString target =
        folderOf(source) + u'/' + outputname::outputFileName(m_intake.fileInfo()->fileName);
    if (const auto folder = m_destinations.openedFolderFor(target)) {
        const bool isOpen = folder->securityScoped && folderaccess::startAccessing(folder->path);
        addJob(m_queue.uniqueDestination(target), isOpen ? folder->path : QString(), false);
        return;
    }
    if (!mayAsk) {
        alert_apptitled(Texts::tr("You did not seem to select a folder that contains your MKV."),
                        Texts::tr("Cancel"));
        return;
    }
    alert_apptitled(
        Texts::tr(
            "You've chosen the 'Next to' default destination for converted MP4 files. Since Apple's SandBox limits access to your files you have to open the folder that contains all MKV files that you want to convert"),
        Texts::tr("OK"));
    m_panels.chooseFolder(FilePanels::Over::MainWindow, folderOf(source),
                          [this, source](const QString& path) {
                              m_destinations.addOpenedFolder(path);
                              if (isStillCurrent(source)) goNextToSource(false);
                          });
}

void AddSheet::goToStoredFolder(qsizetype number) {
    // A folder on a disk that was unplugged meanwhile is reported to the user; it is not a program error.
    if (const QString problem = m_destinations.problemOfFolder(number); !problem.isEmpty()) {
        alert_apptitled(
            Texts::tr("The destination folder can not be used now. %1 Please choose another destination.")
                .arg(problem),
            Texts::tr("OK"));
        return;
    }
    const QString folder = m_destinations.openFolder(number);
    const QString name = outputname::outputFileName(m_intake.fileInfo()->fileName);
    addJob(m_queue.uniqueDestination(folder + u'/' + name), folder, false);
}

void AddSheet::addJob(const QString& destination, const QString& securityFolder, bool mayReplace) {
    MKVFileInfo info = *m_intake.fileInfo();
    info.destinationURL = QUrl::fromLocalFile(destination);
    if (!securityFolder.isEmpty()) info.securityURL = QUrl::fromLocalFile(securityFolder);
    auto job = std::make_unique<ConversionJob>(m_queue, std::move(info), m_selectedAudio);
    job->presetSpeedInfo();
    job->setMayReplaceDestination(mayReplace);
    if (m_queue.addJob(std::move(job))) return;
    const QString warning =
        makeString("%@\n\n%@", text::localized(JobQueue::kNotWriteable),
                   Texts::tr("The movie “%1” stays on the sheet.").arg(m_intake.fileInfo()->fileName));
    showInTurn([warning] { alert_apptitled(warning, Texts::tr("OK")); }, warning);
}
