#include "app/AddSheet.h"

#include "app/destinations/Destinations.h"
#include "app/destinations/OutputName.h"
#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "app/queue/Removals.h"
#include "convert/plan/PlanText.h"
#include "settings/Changes.h"
#include "settings/Settings.h"

#include <QFileInfo>

#include <utility>

AddSheet::AddSheet(FileIntake& intake, JobQueue& queue, Removals& removals, Destinations& destinations,
                   FilePanels& panels, QObject* parent)
    : QObject(parent),
      m_intake(intake),
      m_queue(queue),
      m_removals(removals),
      m_destinations(destinations),
      m_confirmation(intake, queue, destinations, panels) {
    connect(&intake, &FileIntake::scanningStarted, this, &AddSheet::showScanning);
    connect(&intake, &FileIntake::scanningEnded, this, &AddSheet::changed);
    connect(&intake, &FileIntake::fileAccepted, this, &AddSheet::showAccepted);
    connect(&intake, &FileIntake::filesWaitingChanged, this, &AddSheet::changed);
    connect(&intake, &FileIntake::batchEnded, this, &AddSheet::changed);
    connect(&intake, &FileIntake::becameIdle, this, [this] {
        m_path.clear();
        hide();
        Q_EMIT changed();
    });
    connect(&queue, &JobQueue::pausedChanged, this, &AddSheet::changed);
    connect(&m_confirmation, &Confirmation::message, this, &AddSheet::message);
    connect(&destinations.destinationPopUp(), &DestinationPopUp::changed, this, &AddSheet::planChanged);
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

std::optional<qint32> AddSheet::runtimeSeconds() const {
    return m_intake.fileInfo() ? m_intake.fileInfo()->runtimeSeconds : std::nullopt;
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
    suggestDestination();
    Q_EMIT changed();
    setTopConstraint(kShown);
}

void AddSheet::showAccepted() {
    m_selectedAudio = m_intake.bestLanguage().value_or(0);
    suggestDestination();
    Q_EMIT changed();
    if (m_confirmation.isAddingAll()) {
        m_confirmation.addNext(m_selectedAudio);
    } else if (isConfirmedByItself()) {
        addToQueue();
    }
}

bool AddSheet::isConfirmedByItself() const {
    const bool isArrival = m_intake.drops().originOf(m_path) == Drops::Origin::WatchFolder;
    const bool isDue = settings::AutoAdd.value() || (isArrival && settings::WatchfolderAutoAdd.value());
    return isDue && (m_mayAsk() || !m_confirmation.needsUser());
}

/// What the user chose for a movie is kept for those that came with it.
void AddSheet::suggestDestination() {
    const int drop = m_intake.drops().numberOf(m_path);
    const bool isSame = drop == std::exchange(m_drop, drop);
    const bool isKept =
        m_confirmation.isAddingAll() || (isSame && m_destinations.destinationPopUp().isChosen());
    if (!isKept) m_destinations.rebuildDestinationPopUp();
}

void AddSheet::cancelAdd() {
    if (m_intake.isScanning()) {
        m_intake.cancelProbe();
    } else {
        m_intake.cancelAdd();
    }
}

void AddSheet::cancelAll() {
    m_removals.cancelAll();
    Q_EMIT changed();
}

void AddSheet::addToQueue() {
    m_confirmation.add(m_selectedAudio);
}

void AddSheet::addAll() {
    m_confirmation.addAll(m_selectedAudio);
}

QString AddSheet::notice() const {
    // Of movies that are added without the user there is nothing to read.
    if (!m_intake.fileInfo() || m_confirmation.isAddingAll() || isConfirmedByItself()) return {};
    if (m_queue.willConvert(m_path)) return tr("This movie is in the queue already.");
    const QString output = m_confirmation.expectedOutput();
    if (output.isEmpty() || outputname::isSameFile(output, m_path) || !QFileInfo::exists(output)) return {};
    return tr("Its output exists already; the new one: “%1”.")
        .arg(QFileInfo(m_queue.uniqueDestination(output)).fileName());
}

QString AddSheet::droppedFolder() const {
    return m_path.isEmpty() || !m_confirmation.mayKeepFolders() ? QString()
                                                                : m_intake.drops().folderOf(m_path);
}

bool AddSheet::keepsFolders() const {
    return settings::KeepFolderTree.value();
}

void AddSheet::setKeepsFolders(bool keeps) {
    settings::KeepFolderTree.setValue(keeps);
}
