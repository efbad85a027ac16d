#pragma once

#include "support/base/FileLock.h"

#include <QString>
#include <QVariantMap>

/// A note on disk of one conversion that writes its output, for the life of the run. When the application
/// dies in the middle, the note stays, and the next start deletes what the run left half-written.
class RunJournal {
public:
    /// `replaced` is where a file that the output replaces is meanwhile; empty: there is none.
    RunJournal(QString output, QString progressFile, QString replaced = {});
    /// The run is over and its files are dealt with.
    ~RunJournal();
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    /// The output is there now: only this very file is deleted after a crash.
    void noteOutput();
    /// The run still goes on. To be called about once a second: an output that was changed long after the
    /// last call is somebody else's.
    void keepUp() const;

    /// Deletes the files of runs whose application is gone. Runs of other instances are left alone.
    static void cleanUpAfterCrashes();

private:
    void write() const;

    const QString m_path;
    FileLock m_lock;
    QVariantMap m_facts;
};
