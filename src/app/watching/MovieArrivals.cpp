#include "app/watching/MovieArrivals.h"

#include "support/base/Files.h"
#include "watch/events/DirectoryObserver.h"

#include <QFileInfo>

namespace {

/// The kernel also reports files that were only created, and folders.
bool mayHaveArrived(const EventRecord& record) {
    return (record.flags & kEventItemIsFile) != 0 &&
           (record.flags & (kEventItemModified | kEventItemRenamed)) != 0 &&
           files::pathExtension(record.path) == u"mkv";
}

}  // namespace

CompletionWaiter::Known MovieArrivals::whatIsKnown(const EventRecord& record) {
    switch (record.contents) {
        case EventContents::Whole:
            return CompletionWaiter::Known::SeenWhole;
        case EventContents::Unfinished:
            return (record.flags & kEventItemCreated) != 0 ? CompletionWaiter::Known::Created
                                                           : CompletionWaiter::Known::Modified;
        case EventContents::Unknown:
            return CompletionWaiter::Known::Unknown;
    }
    return CompletionWaiter::Known::Unknown;
}

MovieArrivals::MovieArrivals(std::shared_ptr<Names> processedNames, QObject* parent, const WatchTimes& times)
    : QObject(parent),
      m_latency(times.latency),
      m_waiter(times.completion, {}),
      m_processedNames(std::move(processedNames)) {
    connect(&m_waiter, &CompletionWaiter::abandoned, this, &MovieArrivals::noteMissing);
    connect(&m_waiter, &CompletionWaiter::complete, this, &MovieArrivals::report);
    connect(&m_waiter, &CompletionWaiter::waitingChanged, this, &MovieArrivals::waitingChanged);
}

MovieArrivals::~MovieArrivals() = default;

QString MovieArrivals::start(const QString& folder) {
    stop();
    QString error;
    m_observer = DirectoryObserver::startObserving(
        folder, true, [this](const QList<EventRecord>& records) { handleEvents(records); }, &error,
        m_latency);
    if (!m_observer) return error;
    connect(m_observer.get(), &DirectoryObserver::problem, this, &MovieArrivals::problem);
    connect(m_observer.get(), &DirectoryObserver::ended, this, [this](const QString& reason) {
        stop();
        Q_EMIT ended(reason);
    });
    return {};
}

void MovieArrivals::stop() {
    m_waiter.cancelAll();
    m_missing.clear();
    if (!m_observer) return;
    m_observer->stopObserving();
    m_observer.release()->deleteLater();  // Often called by one of its signals: delete later.
}

void MovieArrivals::handleEvents(const QList<EventRecord>& records) {
    for (const EventRecord& record : records) {
        if (!record.renamedFrom.isEmpty() && (record.flags & kEventItemIsFolder) != 0) followMove(record);
        if (mayHaveArrived(record)) {
            const QString name = QFileInfo(record.path).fileName();
            if (!m_processedNames->contains(name)) m_waiter.wait(record.path, whatIsKnown(record));
        } else {
            m_waiter.lookAgain(record.path);
        }
    }
}

void MovieArrivals::followMove(const EventRecord& record) {
    // The kernel does not report the contents of a moved folder.
    const QString from = record.renamedFrom + u'/';
    const QStringList known = m_waiter.waiting() + m_missing.keys();
    for (const QString& path : known) {
        if (!path.startsWith(from)) continue;
        m_waiter.cancel(path);
        m_missing.remove(path);
        m_waiter.wait(record.path + u'/' + path.mid(from.size()), CompletionWaiter::Known::Unknown);
    }
}

void MovieArrivals::noteMissing(const QString& path) {
    const auto twoBatchesAndMore = 3 * m_latency;
    m_missing.removeIf([](const auto& entry) { return entry.value().hasExpired(); });
    m_missing.insert(path, QDeadlineTimer(twoBatchesAndMore));
}

void MovieArrivals::report(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    if (m_processedNames->contains(name)) return;
    m_processedNames->insert(name);
    Q_EMIT arrived(path);
}
