#pragma once

#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"

#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

/// Removes what the user no longer wants, but only for good when there was time to take it back: until then a
/// running job is paused outside the queue, with its incomplete output. Main thread only.
class Removals : public QObject {
    Q_OBJECT

public:
    /// How long after the last removal everything can be taken back.
    static constexpr int kMilliseconds = 10000;

    /// `queue` and `intake` must outlive this object.
    Removals(JobQueue& queue, FileIntake& intake, QObject* parent = nullptr);
    /// Removes all for good.
    ~Removals() override;

    /// Takes these jobs off the list; JobQueue::removeJobs() calls it.
    void remove(const QList<ConversionJob*>& jobs);
    /// Leaves the current movie and all waiting ones out.
    void cancelAll();

    bool isOffered() const { return !m_entries.empty(); }
    /// What undo() would take back, for the user; empty: nothing.
    QString text() const;
    /// Takes the last removal back: jobs return to their places, and go on if the queue does. Many return in
    /// several steps of the event loop.
    void undo();
    /// The jobs of the last undo() that are not back yet return now.
    void completeUndo();
    /// Removes all for good.
    void settle();

    void setMilliseconds(int milliseconds) { m_timer.setInterval(milliseconds); }

Q_SIGNALS:
    /// The last removal, or whether there is one, has changed.
    void changed();

private:
    struct Entry {
        std::vector<JobQueue::Placed> jobs;          ///< From the top.
        QList<QPointer<ConversionJob>> interrupted;  ///< Those that were converting.
        FileIntake::Unconfirmed movies;
    };

    void add(Entry entry);
    void putBack(QDeadlineTimer deadline);
    void deleteSettled();

    JobQueue& m_queue;
    FileIntake& m_intake;
    std::vector<Entry> m_entries;
    std::optional<Entry> m_returning;                       ///< What undo() has not put back yet.
    std::vector<std::unique_ptr<ConversionJob>> m_settled;  ///< Removed for good, to be deleted.
    QTimer m_timer;
};
