#include "convert/RunJournal.h"

#include "convert/ClaimedFile.h"
#include "convert/TrashRepair.h"
#include "media/Reading.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/FileSteps.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Volume.h"
#include "support/store/SettingsFile.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>
#include <QUuid>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 kMaximumSecondsBehind = 5;
constexpr qint64 kSecondsOfOthers = 24 * 3600;
constexpr qsizetype kUuidLength = 36;
constexpr const char* kNew = ".new";  // A note that is being written.

/// Differs from machine to machine, and says nothing about it: other people may see it in the output's mark.
QString machine() {
    constexpr qsizetype kLength = 8;
    static const QString machine = QString::fromLatin1(
        QCryptographicHash::hash(QSysInfo::machineHostName().toUtf8() + '\n' + QSysInfo::machineUniqueId(),
                                 QCryptographicHash::Sha256)
            .toHex()
            .first(kLength));
    return machine;
}

QString folder() {
    return ApplicationInfo::homeInsideSandbox() + u'/' + ApplicationInfo::name() + "/Running";
}

/// Whether the open file still has this name.
bool isStillAt(int file, const QByteArray& path) {
    struct stat open = {};
    struct stat named = {};
    return ::fstat(file, &open) == 0 && ::lstat(path.constData(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

/// Creates and locks a file. Somebody who cleans up may see it before it is locked and delete it. Returns
/// -1 on failure.
int createLocked(const QByteArray& path) {
    for (;;) {
        const int file = ::open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (file < 0) return -1;
        // Where there are no locks nobody cleans up either.
        ::flock(file, LOCK_EX);
        if (isStillAt(file, path)) return file;
        ::close(file);
    }
}

/// Gives a replaced file a free name beside the output. Returns the name; empty on failure.
QString keepBeside(const QString& aside, const QString& output) {
    for (;;) {
        const QString kept = files::uniqueFile(output);
        const int error = filesteps::renameToFree(aside, kept);
        if (error == 0) return kept;
        if (error != EEXIST) return {};
    }
}

/// The mark stays on a file that another program writes anew under the same name.
bool isSomebodysMovie(const QString& path, const QDateTime& lastSeen) {
    if (QFileInfo(path).lastModified() <= lastSeen.addSecs(kMaximumSecondsBehind)) return false;
    const media::Reading reading = media::read(path);
    return reading.isComplete() && !reading.tracks.empty() && reading.damageTotal == 0;
}

QByteArray contentsOf(int file) {
    QFile opened;
    return opened.open(file, QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
}

}  // namespace

QString RunJournal::Facts::temporary(const QString& path) const {
    const QFileInfo file(path);
    return file.path() + u'/' + files::fittingFileName(u'.' + file.fileName(), u'.' + id.first(8) + ".claim");
}

QByteArray RunJournal::Facts::encoded() const {
    return settingsfile::encoded({{"id", id},
                                  {"output", output},
                                  {"outputIdentity", outputIdentity},
                                  {"replaced", aside},
                                  {"progressFile", progressFile},
                                  {"progressIdentity", progressIdentity},
                                  {"volume", volume},
                                  {"trashedAs", trashedAs}});
}

RunJournal::Facts RunJournal::Facts::decoded(const QByteArray& note) {
    const QVariantMap facts = settingsfile::decoded(note).value_or(QVariantMap());
    const auto text = [&](const char* key) { return facts.value(key).toString(); };
    return {text("id"),           text("output"),           text("outputIdentity"), text("replaced"),
            text("progressFile"), text("progressIdentity"), text("volume"),         text("trashedAs")};
}

QString RunJournal::notePath(const QString& id, State state) {
    static constexpr std::array kEndings = {".json", ".finished.json", ".keeping.json", ".trash.json"};
    return folder() + u'/' + id + kEndings[static_cast<size_t>(state)];
}

RunJournal::State RunJournal::stateOf(const QString& note) {
    if (note.endsWith(QLatin1StringView(".finished.json"))) return State::Finished;
    if (note.endsWith(QLatin1StringView(".keeping.json"))) return State::Keeping;
    return note.endsWith(QLatin1StringView(".trash.json")) ? State::Trashing : State::Writing;
}

RunJournal::RunJournal() {
    m_facts.id = QUuid::createUuid().toString(QUuid::WithoutBraces) + u'-' + machine();
}

RunJournal::~RunJournal() {
    if (m_note >= 0) ::close(m_note);
}

int RunJournal::save() {
    if (!QDir().mkpath(folder())) return errno != 0 ? errno : EIO;
    const QString path = notePath(m_facts.id, m_state);
    const QString unfinished = path + kNew;
    const int note = createLocked(QFile::encodeName(unfinished));
    if (note < 0) return errno;
    int error = filesteps::writeAndSync(note, m_facts.encoded());
    if (error == 0) error = filesteps::rename(unfinished, path);
    if (error == 0) error = filesteps::syncFolder(folder());
    if (error != 0) {
        filesteps::remove(unfinished);
        ::close(note);
        return error;
    }
    if (m_note >= 0) ::close(m_note);
    m_note = note;
    return 0;
}

RunJournal::Trouble RunJournal::fail(Trouble trouble, int error) {
    m_error = error;
    discard();
    return trouble;
}

RunJournal::Trouble RunJournal::claim(const Wish& wish) {
    const auto freeName = [&] {
        return files::uniqueFile(wish.output, [&](const QString& name) {
            return filesteps::isTaken(name) || (wish.isTaken && wish.isTaken(name));
        });
    };
    const auto freeProgressFile = [&] { return files::uniqueFile(wish.progressFile); };
    const QFileInfo output(wish.output);
    m_facts.volume = volume::mountPoint(output.path());
    const bool isFixed = wish.replaces || wish.takesNoOtherName;
    if (wish.replaces && claimedfile::isBeingWritten(wish.output)) return fail(Trouble::NameTaken, EBUSY);
    m_facts.output = isFixed ? wish.output : freeName();
    if (wish.replaces && filesteps::isTaken(wish.output)) {
        m_facts.aside =
            output.path() + u'/' +
            files::fittingFileName(u'.' + output.fileName(), u'.' + m_facts.id.first(8) + ".replaced");
    }
    if (!wish.progressFile.isEmpty()) m_facts.progressFile = freeProgressFile();
    if (const int error = save()) return fail(Trouble::PrivateData, error);
    if (!wish.progressFile.isEmpty()) {
        const Trouble trouble =
            claimFile(m_facts.progressFile, m_facts.progressIdentity, Trouble::PrivateData, freeProgressFile);
        if (trouble != Trouble::None) return trouble;
    }
    if (hasReplaced()) {
        if (const int error = setAside(wish.output))
            return fail(error == EBUSY ? Trouble::NameTaken : Trouble::Output, error);
    }
    const Trouble trouble = claimFile(m_facts.output, m_facts.outputIdentity, Trouble::Output,
                                      isFixed ? std::function<QString()>() : freeName);
    return trouble == Trouble::Output && m_error == EEXIST ? Trouble::NameTaken : trouble;
}

/// Returns an errno; EBUSY: another run has claimed the name.
int RunJournal::setAside(const QString& replaced) {
    const int error = filesteps::renameToFree(replaced, m_facts.aside);
    if (error == ENOENT) return 0;  // Another run has set it aside.
    if (error != 0 || !claimedfile::isBeingWritten(m_facts.aside)) return error;
    filesteps::renameToFree(m_facts.aside, replaced);
    return EBUSY;
}

RunJournal::Trouble RunJournal::claimFile(QString& path, QString& identity, Trouble trouble,
                                          const std::function<QString()>& nextName) {
    for (;;) {
        int noteError = 0;
        const int error =
            claimedfile::claim({path, m_facts.temporary(path), m_facts.id}, [&](const QString& seen) {
                identity = seen;
                noteError = save();
                return noteError == 0;
            });
        if (error == 0) return Trouble::None;
        if (noteError != 0) return fail(Trouble::PrivateData, noteError);
        if (error != EEXIST || !nextName) return fail(trouble, error);
        path = nextName();
        identity.clear();
        if (const int saved = save()) return fail(Trouble::PrivateData, saved);
    }
}

void RunJournal::noteStillRunning() const {
    if (m_note >= 0) ::futimens(m_note, nullptr);
}

bool RunJournal::setState(State state, bool syncs) {
    if (filesteps::rename(notePath(m_facts.id, m_state), notePath(m_facts.id, state)) != 0) return false;
    m_state = state;
    return !syncs || filesteps::syncFolder(folder()) == 0;
}

RunJournal::Finish RunJournal::finish(Fate fate, bool isSynced) {
    const bool isNoted = setState(fate == Fate::Deleted ? State::Finished : State::Keeping, isSynced);
    // Nothing may be deleted that the note does not know of.
    if (!isNoted) m_state = State::Keeping;
    return {end(), isNoted && isSynced};
}

void RunJournal::discard() {
    m_state = State::Writing;
    end();
}

QString RunJournal::end() {
    if (m_note < 0) return {};
    const Settled settled = settle(m_facts, m_state);
    if (settled.isDone) {
        for (const State state : {State::Writing, State::Finished, State::Keeping})
            filesteps::remove(notePath(m_facts.id, state));
    }
    ::close(std::exchange(m_note, -1));
    return settled.kept;
}

RunJournal::Settled RunJournal::settle(const Facts& facts, State state) {
    Settled settled;
    settled.isDone = settleOutput(facts, state, settled.kept);
    if (!settleProgressFile(facts)) settled.isDone = false;
    return settled;
}

bool RunJournal::settleProgressFile(const Facts& facts) {
    const QString& path = facts.progressFile;
    if (path.isEmpty()) return true;
    const bool isOurs = claimedfile::isOurs(path, facts.id, facts.progressIdentity);
    return filesteps::remove(facts.temporary(path)) == 0 && (!isOurs || filesteps::remove(path) == 0);
}

bool RunJournal::settleOutput(const Facts& facts, State state, QString& kept) {
    const QString& output = facts.output;
    const bool hasAside = !facts.aside.isEmpty() && filesteps::isTaken(facts.aside);
    if (filesteps::remove(facts.temporary(output)) != 0) return false;
    if (state == State::Writing) {
        const bool isOurs = claimedfile::isOurs(output, facts.id, facts.outputIdentity);
        if (!hasAside) return !isOurs || filesteps::remove(output) == 0;
        if (isOurs || !filesteps::isTaken(output)) return filesteps::rename(facts.aside, output) == 0;
    } else {
        claimedfile::release(output);
        if (!hasAside) return true;
        if (!filesteps::isTaken(output)) return filesteps::renameToFree(facts.aside, output) == 0;
        if (state == State::Finished) return filesteps::remove(facts.aside) == 0;
    }
    kept = keepBeside(facts.aside, output);
    return !kept.isEmpty();
}

/// Ends the run of a note that nobody holds. Returns whether the note can go.
bool RunJournal::settleNote(const QString& path, int note) {
    const QByteArray bytes = contentsOf(note);
    const Facts facts = Facts::decoded(bytes);
    if (facts.id.isEmpty()) {
        if (!bytes.isEmpty()) logError("Error: the note %@ of a conversion can not be read", path);
        return bytes.isEmpty();
    }
    if (volume::mountPoint(QFileInfo(facts.output).path()) != facts.volume) {
        logInformation("Info: the volume of the unfinished output %@ is away", facts.output);
        settleProgressFile(facts);
        return false;
    }
    State state = stateOf(path);
    if (state == State::Trashing)
        return trashrepair::settle(facts.output, FileStamp::fromText(facts.trashedAs.toLatin1()));
    const bool isOurs = claimedfile::isOurs(facts.output, facts.id, facts.outputIdentity);
    if (state == State::Writing && isOurs) {
        if (isSomebodysMovie(facts.output, QFileInfo(path).lastModified())) {
            state = State::Keeping;
        } else {
            logInformation("Info: deleting the unfinished output %@", facts.output);
        }
    }
    const Settled settled = settle(facts, state);
    if (!settled.kept.isEmpty())
        logInformation("Info: the file that was to be replaced is kept as %@", settled.kept);
    if (!settled.isDone) logError("Error: could not clean up after the conversion to %@", facts.output);
    return settled.isDone;
}

bool RunJournal::isElsewhere(const QString& note) {
    const QFileInfo file(note);
    const QString id = file.fileName().section(u'.', 0, 0);
    // Earlier versions did not name the machine.
    return id.size() > kUuidLength && !id.endsWith(machine()) &&
           file.lastModified().secsTo(QDateTime::currentDateTime()) < kSecondsOfOthers;
}

void RunJournal::cleanUpAfterCrashes() {
    // On a disk of its own the locks are reliable, also after a change of the machine's name.
    const bool isShared = volume::isShared(folder());
    const QFileInfoList notes =
        QDir(folder()).entryInfoList({"*.json", QString("*.json") + kNew}, QDir::Files);
    for (const QFileInfo& found : notes) {
        const QString path = found.filePath();
        if (isShared && isElsewhere(path)) continue;
        const QByteArray name = QFile::encodeName(path);
        const int note = ::open(name.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
        if (note < 0) continue;
        if (::flock(note, LOCK_EX | LOCK_NB) == 0 && isStillAt(note, name)) {
            // What an unfinished note speaks of does not exist, or a finished note has it, too.
            if (path.endsWith(QLatin1StringView(kNew)) || settleNote(path, note)) filesteps::remove(path);
        }
        ::close(note);
    }
}

bool RunJournal::moveToTrash(const QString& source, const std::function<bool()>& move) {
    RunJournal journal;
    journal.m_state = State::Trashing;
    journal.m_facts.output = source;
    journal.m_facts.volume = volume::mountPoint(QFileInfo(source).path());
    if (const auto stamp = FileStamp::of(source)) journal.m_facts.trashedAs = stamp->toText();
    if (journal.save() != 0) return false;
    const bool isMoved = move();
    filesteps::remove(notePath(journal.m_facts.id, State::Trashing));
    return isMoved;
}

bool RunJournal::canWrite(const QString& path) {
    if (const auto known = files::isWriteablePath(path)) return *known;
    RunJournal journal;
    const Trouble trouble = journal.claim({path, false, {}, {}});
    QFile file(journal.output());
    const bool isWriteable = trouble == Trouble::None && journal.output() == path &&
                             file.open(QIODevice::WriteOnly) && file.write("TEST") == 4 && file.flush();
    file.close();
    journal.discard();
    return isWriteable || trouble == Trouble::PrivateData;  // Of which the run tells more.
}
