#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// The files of one run, and a note of them: a locked file in the private data that has every name before it
/// exists. The same steps end a run and clean up after one whose process was killed, at whatever moment: the
/// output is complete or gone, a replaced file is gone or back, and then the note is deleted. Main thread
/// only; claim() and a synced finish() sync the note, a small file.
class RunJournal {
public:
    struct Wish {
        QString output;
        bool replaces = false;  ///< A file at `output` is set aside. Otherwise a free name is chosen.
        /// Names that are to be avoided, too. May be null.
        std::function<bool(const QString& path)> isTaken;
        QString progressFile;           ///< A free name is chosen; empty: there is none.
        bool takesNoOtherName = false;  ///< Fails instead with Trouble::NameTaken.
    };
    enum class Trouble {
        None,
        PrivateData,
        Output,
        NameTaken,  ///< Another run has the name that was wanted and no other.
    };
    /// What becomes of the replaced file.
    enum class Fate { Deleted, KeptBeside };

    RunJournal();
    /// Does not end the run: see finish() and discard().
    ~RunJournal();
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    /// Notes and creates the empty files, and sets the replaced one aside. On failure nothing is left;
    /// error() has the errno.
    Trouble claim(const Wish& wish);
    int error() const { return m_error; }

    const QString& output() const { return m_facts.output; }
    const QString& progressFile() const { return m_facts.progressFile; }
    bool hasReplaced() const { return !m_facts.aside.isEmpty(); }

    /// Records that the run continues. Call it about once a second: a whole movie that was written long after
    /// the last call is another program's.
    void noteStillRunning() const;

    struct Finish {
        QString kept;            ///< Where the replaced file is; empty: it is deleted, or there was none.
        bool isDurable = false;  ///< Something older than the output may be deleted now.
    };
    /// The output is finished. `isSynced`: it is on the disk; the note is then synced, too. A replaced file
    /// is to be deleted only then.
    Finish finish(Fate fate, bool isSynced);
    /// Deletes the output and moves the replaced file back.
    void discard();

    /// Runs `move`, which moves the source to the trash, under a note of its own. Returns false without
    /// running it if that cannot be written, else the result.
    static bool moveToTrash(const QString& source, const std::function<bool()>& move);

    /// Ends the runs whose process is gone. Runs of living instances are not touched; the note of a run whose
    /// volume is away is kept. The private data may be shared with other machines, whose locks this one may
    /// not see: their notes are left alone for a day.
    static void cleanUpAfterCrashes();

    /// Whether a new file can be created at `path`; false for an existing one. Leaves nothing, also when
    /// killed.
    static bool canWrite(const QString& path);

private:
    /// What the note's name says; a rename needs no space on a full disk.
    enum class State { Writing, Finished, Keeping, Trashing };

    struct Facts {
        QString id;
        QString output;
        QString outputIdentity;  ///< See claimedfile.
        QString aside;           ///< Where the replaced file is meanwhile; empty: there is none.
        QString progressFile;
        QString progressIdentity;
        QString volume;     ///< The mount point of the output's volume.
        QString trashedAs;  ///< The stamp of a source that goes to the trash, as text.

        QString temporary(const QString& path) const;
        QByteArray encoded() const;
        static Facts decoded(const QByteArray& note);
    };
    struct Settled {
        bool isDone = false;
        QString kept;
    };

    Trouble fail(Trouble trouble, int error);
    Trouble claimFile(QString& path, QString& identity, Trouble trouble,
                      const std::function<QString()>& nextName);
    int save();
    bool setState(State state, bool syncs);
    QString end();

    static Settled settle(const Facts& facts, State state);
    static bool settleOutput(const Facts& facts, State state, QString& kept);
    static bool settleProgressFile(const Facts& facts);
    int setAside(const QString& replaced);
    /// Whether the note is of another machine, which may still hold it.
    static bool isElsewhere(const QString& note);
    static bool settleNote(const QString& path, int note);
    static QString notePath(const QString& id, State state);
    static State stateOf(const QString& note);

    Facts m_facts;
    State m_state = State::Writing;
    int m_note = -1;  ///< Locked; -1: there is none.
    int m_error = 0;
};
