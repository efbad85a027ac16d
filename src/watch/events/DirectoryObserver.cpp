#include "watch/events/DirectoryObserver.h"

#include "support/base/Texts.h"
#include "support/base/Volume.h"
#include "watch/events/EventReader.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSocketNotifier>

#include <utility>

namespace {

/// For events and for the scan separately, so that neither delays the other.
constexpr int kSliceMilliseconds = 10;

std::string expanded(const QString& path) {
    const bool isAtHome = path == u"~" || path.startsWith(u"~/");
    const QString whole = isAtHome ? QDir::homePath() + path.mid(1) : path;
    return QFile::encodeName(QDir::cleanPath(QDir::current().absoluteFilePath(whole))).toStdString();
}

}  // namespace

struct DirectoryObserver::Watch {
    Watch(const QString& path, bool withFileLevelEvents) : batch(withFileLevelEvents), tree(expanded(path)) {}

    bool hasWork() const { return scan.hasWork() || events.awaitsMoves() || tree.hasToRemove(); }

    EventBatch batch;
    TreeWatch tree;
    TreeScan scan{tree, batch};
    EventReader events{tree, scan, batch};
};

std::unique_ptr<DirectoryObserver> DirectoryObserver::startObserving(
    const QString& path, bool withFileLevelEvents, Block block, QString* error,
    std::chrono::milliseconds latency, std::chrono::milliseconds portalInterval) {
    auto watch = std::make_unique<Watch>(path, withFileLevelEvents);
    const QString why = path.isEmpty() ? Texts::tr("No folder was given.") : watch->tree.start();
    if (error) *error = why;
    if (!why.isEmpty()) return nullptr;
    return std::unique_ptr<DirectoryObserver>(
        new DirectoryObserver(std::move(watch), std::move(block), latency, portalInterval));
}

DirectoryObserver::DirectoryObserver(std::unique_ptr<Watch> watch, Block block,
                                     std::chrono::milliseconds latency,
                                     std::chrono::milliseconds portalInterval)
    : m_watch(std::move(watch)), m_block(std::move(block)) {
    for (QTimer* timer : {&m_delivery, &m_scanAgain}) {
        timer->setSingleShot(true);
        timer->setInterval(latency);
        timer->setTimerType(Qt::PreciseTimer);  // A coarse timer may be 5 % late.
    }
    connect(&m_delivery, &QTimer::timeout, this, &DirectoryObserver::deliver);
    connect(&m_scanAgain, &QTimer::timeout, this, &DirectoryObserver::scanAgain);
    connect(&m_slices, &QTimer::timeout, this, &DirectoryObserver::processSlice);
    m_notifier = new QSocketNotifier(m_watch->tree.inotify().descriptor(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &DirectoryObserver::processSlice);
    m_watch->scan.readTree(TreeScan::Report::Arrivals);
    m_slices.start(0);
    connect(&m_portalScan, &QTimer::timeout, this, &DirectoryObserver::scanPortal);
    if (volume::isInDocumentsPortal(QString::fromStdString(m_watch->tree.rootPath())))
        m_portalScan.start(portalInterval);
}

DirectoryObserver::~DirectoryObserver() {
    stopObserving();
}

void DirectoryObserver::stopObserving() {
    for (QTimer* timer : {&m_delivery, &m_slices, &m_scanAgain, &m_portalScan})
        timer->stop();
    m_notifier->setEnabled(false);  // Must precede closing its descriptor.
    m_watch.reset();
    m_block = nullptr;
}

size_t DirectoryObserver::folderCount() const {
    return m_watch ? m_watch->tree.tree().size() : 0;
}

quint64 DirectoryObserver::skippedNames() const {
    return m_watch ? m_watch->batch.skippedNames() : 0;
}

void DirectoryObserver::simulateOverflow() {
    if (!m_watch) return;
    m_watch->events.overflow();
    m_slices.start(0);
}

void DirectoryObserver::processSlice() {
    const QPointer<DirectoryObserver> self(this);
    m_watch->events.read(QDeadlineTimer(kSliceMilliseconds));
    const QString reason = m_watch->events.endReason();
    if (!reason.isEmpty()) {
        end(reason);
        return;
    }
    m_watch->scan.work(QDeadlineTimer(kSliceMilliseconds));
    m_watch->tree.removeSome();

    // Later, and once for all overflows until then: scanning during a flood of events would only cause the
    // next overflow.
    if (m_watch->events.takeOverflow() && !m_scanAgain.isActive()) m_scanAgain.start();
    if (m_watch->batch.isPending() && !m_delivery.isActive()) m_delivery.start();
    if (!m_watch->hasWork())
        m_slices.stop();
    else if (!m_slices.isActive())
        m_slices.start(0);
    const bool announces = !m_watch->scan.hasWork() && !std::exchange(m_announced, !m_watch->scan.hasWork());

    const QStringList problems = m_watch->tree.takeProblems();
    for (const QString& message : problems) {
        Q_EMIT problem(message);
        if (!self || !m_watch) return;
    }
    if (announces) Q_EMIT watching();
    if (self && m_watch && m_watch->batch.isFull()) deliver();
}

void DirectoryObserver::scanAgain() {
    if (m_watch->scan.hasWork()) {
        m_scanAgain.start();
    } else if (!m_watch->tree.isRootInPlace()) {
        end(movedAway());
    } else {
        m_announced = false;
        m_watch->scan.readTree(TreeScan::Report::Missed);
        m_slices.start(0);
    }
}

void DirectoryObserver::scanPortal() {
    if (m_watch->scan.hasWork()) return;
    if (!m_watch->tree.isRootInPlace()) {
        end(movedAway());
        return;
    }
    m_watch->scan.readTree(TreeScan::Report::Missed);
    m_slices.start(0);
}

void DirectoryObserver::deliver() {
    m_delivery.stop();
    // Moves of a parent folder cause no events here.
    if (!m_watch->tree.isRootInPlace()) {
        end(movedAway());
        return;
    }
    const Block block = m_block;  // The block may delete this object.
    block(m_watch->batch.drain());
}

QString DirectoryObserver::movedAway() const {
    return Texts::tr("The watched folder “%1” is not in its place any more.")
        .arg(QString::fromStdString(m_watch->tree.rootPath()));
}

void DirectoryObserver::end(const QString& reason) {
    const QPointer<DirectoryObserver> self(this);
    const Block block = m_block;
    if (m_watch->batch.isPending()) block(m_watch->batch.drain());
    if (!self || !m_watch) return;
    stopObserving();
    Q_EMIT ended(reason);
}
