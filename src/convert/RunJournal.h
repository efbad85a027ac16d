#pragma once

#include "support/base/FileLock.h"

#include <QString>
#include <QVariantMap>

/// A file that records one running conversion. If the application crashes, the file remains, and the next
/// start deletes the incomplete output of the run.Write errors are ignored: the run does not depend on the
/// file. Main thread only.
class RunJournal {
public:
    /// `replaced` is the temporary path of the file that the output replaces; empty: there is none.
    RunJournal(QString output, QString progressFile, QString replaced = {});
    /// Deletes the record: the run has ended and its files are complete or deleted.
    ~RunJournal();
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    /// The output exists now: only this file, identified by its inode, is deleted after a crash.
    void noteOutput();
    /// Records that the run continues. Call it about once a second: an output that was changed long after the
    /// last call belongs to another program.
    void noteStillRunning() const;

    /// Deletes the files of runs whose instance has crashed. Runs of other live instances are not touched.
    static void cleanUpAfterCrashes();

private:
    void write() const;

    const QString m_path;
    FileLock m_lock;
    QVariantMap m_facts;
};
