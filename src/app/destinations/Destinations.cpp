#include "app/destinations/Destinations.h"

#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"

#include <QDir>

#include <algorithm>

namespace {

constexpr qsizetype kAsk = 0;

QVariantList bookmarks() {
    return defaultArray(kDestinationBookmarksKey).value_or(QVariantList());
}

QVariantList names() {
    return defaultArray(kDestinationNamesKey).value_or(QVariantList());
}

qsizetype defaultDestination() {
    return static_cast<qsizetype>(defaultInt(kDefaultDestinationKey));
}

QString nameOfFolder(const QString& folder) {
    const QString name = QDir(folder).dirName();
    return name.isEmpty() ? folder : name;
}

/// One for each stored folder, also where someone else left too few or too many in the settings.
QStringList titles() {
    QStringList result;
    const QVariantList stored = bookmarks();
    const QVariantList storedNames = names();
    for (qsizetype i = 0; i < stored.size(); ++i)
        result.append(i < storedNames.size() ? storedNames[i].toString()
                                             : nameOfFolder(folderaccess::placeOf(stored[i].toByteArray())));
    return result;
}

/// The absent folders, at their positions in the whole list; empty elements stand for the present ones.
QVariantList absentBookmarks() {
    return defaultArray(kAbsentDestinationsKey).value_or(QVariantList());
}

bool isUsable(const QByteArray& bookmark) {
    QString error;
    const auto folder = folderaccess::resolveBookmark(bookmark, error);
    if (!folder || !folderaccess::startAccessing(*folder)) return false;
    folderaccess::stopAccessing(*folder);
    return true;
}

QString inQuotes(const QStringList& paths) {
    return u'“' + paths.join(QStringLiteral("”, “")) + u'”';
}

QString goneText(const QStringList& paths) {
    if (paths.isEmpty()) return {};
    if (paths.size() == 1)
        return Texts::tr("The destination folder %1 is not there. It comes back to the list when it is.")
            .arg(inQuotes(paths));
    return Texts::tr("These destination folders are not there: %1. They come back to the list when they are.")
        .arg(inQuotes(paths));
}

QString returnedText(const QStringList& paths) {
    if (paths.size() == 1) return Texts::tr("The destination folder %1 is there again.").arg(inQuotes(paths));
    return Texts::tr("These destination folders are there again: %1.").arg(inQuotes(paths));
}

}  // namespace

struct Destinations::KnownFolder {
    QByteArray bookmark;
    QString name;
    bool isDefault = false;
    bool isAbsent = false;
};

/// The stored folders, with the absent ones at their positions among them.
QList<Destinations::KnownFolder> Destinations::knownFolders() {
    QList<KnownFolder> folders;
    const QVariantList stored = bookmarks();
    const QStringList storedNames = titles();
    const qsizetype preselected = defaultDestination() - DestinationPopUp::kFirstFolder;
    for (qsizetype i = 0; i < stored.size(); ++i)
        folders.append({stored[i].toByteArray(), storedNames[i], i == preselected, false});
    // Keep another default destination that was chosen meanwhile.
    const QByteArray absentDefault =
        defaultDestination() == 0 ? defaultObject(kAbsentDefaultDestinationKey).toByteArray() : QByteArray();
    const QVariantList absent = absentBookmarks();
    const QStringList absentNames = settings::AbsentDestinationNames.value();
    for (qsizetype i = 0; i < absent.size(); ++i) {
        const QByteArray bookmark = absent[i].toByteArray();
        if (bookmark.isEmpty()) continue;
        const auto known = std::ranges::find(folders, bookmark, &KnownFolder::bookmark);
        const bool isDefault = bookmark == absentDefault;
        const QString name = absentNames.value(i);
        if (known != folders.end()) {
            known->isDefault |= isDefault;  // The user added it again meanwhile.
        } else {
            folders.insert(qMin(i, folders.size()),
                           {bookmark, name.isEmpty() ? nameOfFolder(folderaccess::placeOf(bookmark)) : name,
                            isDefault, true});
        }
    }
    return folders;
}

Destinations::Destinations(FilePanels& panels, QObject* parent) : QObject(parent), m_panels(panels) {
    connect(&m_returnWatch, &ReturnWatch::mayHaveReturned, this, &Destinations::restoreReturned);
    // When all of them are as they should be: each is reported on its own.
    const auto follow = [this] {
        if (std::exchange(m_isFollowing, true)) return;
        QMetaObject::invokeMethod(this, &Destinations::followSettings, Qt::QueuedConnection);
    };
    settings::DestinationBookmarks.onChange(this, follow);
    settings::DestinationNames.onChange(this, follow);
    settings::DefaultDestination.onChange(this, follow);
}

QString Destinations::restoreAtLaunch() {
    // Outside a sandbox no folder has to be opened first.
    if (!sharedDesktop().isSandboxed()) m_openedFolders.append({"/", false});
    renumberFromOldVersions();
    QStringList gone = updateStoredFolders(Occasion::Launch).gone;
    clampDefaultDestination();
    rebuildPreferencesDestinationPopUp();
    watchForReturn();
    // Without it, movies are written elsewhere: report it at every launch.
    const QByteArray absentDefault = defaultObject(kAbsentDefaultDestinationKey).toByteArray();
    const QString place = folderaccess::placeOf(absentDefault);
    if (!absentDefault.isEmpty() && !gone.contains(place)) gone.append(place);
    return goneText(gone);
}

void Destinations::renumberFromOldVersions() {
    if (defaultInt(kHasUpgradedFromPre13Key) != 0) return;
    // Version 1.3 inserted the separator after the first two items.
    if (defaultDestination() != 0) setDefaultInt(kDefaultDestinationKey, defaultDestination() + 1);
    logInformation("Info: upgrading pre1.3 bookmarks");
    setDefaultInt(kHasUpgradedFromPre13Key, 1);
}

Destinations::Changes Destinations::updateStoredFolders(Occasion occasion) {
    Changes changes;
    QList<KnownFolder> folders = knownFolders();
    for (KnownFolder& folder : folders) {
        const QString place = folderaccess::placeOf(folder.bookmark);
        // A folder that disappears while the application runs stays in the list.
        if (!folder.isAbsent && occasion != Occasion::Launch) continue;
        const bool wasAbsent = std::exchange(folder.isAbsent, !isUsable(folder.bookmark));
        if (!folder.isAbsent) m_openedFolders.append({place, true});
        if (wasAbsent != folder.isAbsent) (folder.isAbsent ? changes.gone : changes.returned).append(place);
    }
    if (!changes.gone.isEmpty())
        logError("Info: going to delete %lu invalid bookmarks",
                 static_cast<unsigned long>(changes.gone.size()));
    save(folders, defaultDestination());
    return changes;
}

void Destinations::restoreReturned() {
    const QStringList returned = updateStoredFolders(Occasion::Return).returned;
    if (returned.isEmpty()) return;
    watchForReturn();
    rebuildKeepingChoice();
    Q_EMIT message(returnedText(returned));
}

/// The user may be choosing a folder for a movie: it stays selected, even if its number has changed.
void Destinations::rebuildKeepingChoice() {
    constexpr qsizetype kNone = -1;
    const QByteArrayList before = m_listed;
    noteListed();
    const qsizetype selected = m_addSheet.selected();
    const qsizetype number = selected - DestinationPopUp::kFirstFolder;
    const bool isChosen = m_addSheet.isChosen();
    qsizetype now = number < 0 ? selected : kNone;
    if (number >= 0 && number < before.size()) {
        const qsizetype found = m_listed.indexOf(before[number]);
        now = found < 0 ? kAsk : DestinationPopUp::kFirstFolder + found;
    }
    m_addSheet.rebuild(m_listedNames, now);
    if (isChosen) m_addSheet.choose(now);
    rebuildPreferencesDestinationPopUp();
}

void Destinations::noteListed() {
    m_listed = settings::DestinationBookmarks.value();
    m_listedNames = titles();
}

/// Another process, or the command that restores defaults, may have changed them.
void Destinations::followSettings() {
    m_isFollowing = false;
    if (m_listed != settings::DestinationBookmarks.value() || m_listedNames != titles()) {
        rebuildKeepingChoice();
    } else if (m_preferences.selected() != defaultDestination()) {
        rebuildPreferencesDestinationPopUp();
    }
}

/// The default destination is that of the folders, or if none of them is, `otherDefault`.
void Destinations::save(const QList<KnownFolder>& folders, qsizetype otherDefault) {
    QVariantList present;
    QVariantList presentNames;
    QVariantList absent;
    QVariantList absentNames;
    QByteArray absentDefault;
    qsizetype newDefault = otherDefault;
    for (const KnownFolder& folder : folders) {
        absent.append(folder.isAbsent ? folder.bookmark : QByteArray());
        absentNames.append(folder.isAbsent ? folder.name : QString());
        if (folder.isAbsent) {
            if (!folder.isDefault) continue;
            absentDefault = folder.bookmark;
            newDefault = kAsk;
            continue;
        }
        if (folder.isDefault) newDefault = DestinationPopUp::kFirstFolder + present.size();
        present.append(folder.bookmark);
        presentNames.append(folder.name);
    }
    while (!absent.isEmpty() && absent.last().toByteArray().isEmpty()) {
        absent.removeLast();
        absentNames.removeLast();
    }
    if (present == bookmarks() && presentNames == names() && newDefault == defaultDestination() &&
        absent == absentBookmarks() &&
        absentDefault == defaultObject(kAbsentDefaultDestinationKey).toByteArray()) {
        return;
    }
    // The numbers of one are wrong with the lists of another process.
    standardUserDefaults().setTogether(
        {{kDestinationBookmarksKey, present},
         {kDestinationNamesKey, presentNames},
         {kDefaultDestinationKey, qint64{newDefault}},
         {kAbsentDestinationsKey, absent.isEmpty() ? QVariant() : QVariant(absent)},
         {kAbsentDestinationNamesKey, absent.isEmpty() ? QVariant() : QVariant(absentNames)},
         {kAbsentDefaultDestinationKey, absentDefault.isEmpty() ? QVariant() : QVariant(absentDefault)}});
}

/// `change` gets all known folders, and the position of this one among them.
void Destinations::edit(qsizetype number, const std::function<void(QList<KnownFolder>&, qsizetype)>& change) {
    if (number < 0 || number >= m_listed.size()) return;
    const QByteArray bookmark = m_listed[number];
    standardUserDefaults().readAgain();
    QList<KnownFolder> folders = knownFolders();
    const auto found = std::ranges::find(folders, bookmark, &KnownFolder::bookmark);
    if (found != folders.end() && !found->isAbsent) {
        change(folders, found - folders.begin());
        const bool isFolder = defaultDestination() >= DestinationPopUp::kFirstFolder;
        save(folders, isFolder ? kAsk : defaultDestination());
        standardUserDefaults().synchronise();
        watchForReturn();
    }
    rebuildKeepingChoice();
}

void Destinations::renameFolder(qsizetype number, const QString& name) {
    edit(number, [&](QList<KnownFolder>& folders, qsizetype position) {
        const QString simplified = name.simplified();
        if (!simplified.isEmpty()) folders[position].name = simplified;
    });
}

void Destinations::removeFolder(qsizetype number) {
    edit(number, [](QList<KnownFolder>& folders, qsizetype position) { folders.removeAt(position); });
}

void Destinations::moveFolder(qsizetype number, qsizetype to) {
    edit(number, [to](QList<KnownFolder>& folders, qsizetype position) {
        QList<qsizetype> places;  // Of the present folders.
        for (qsizetype i = 0; i < folders.size(); ++i) {
            if (!folders[i].isAbsent) places.append(i);
        }
        qsizetype now = places.indexOf(position);
        const qsizetype target = qBound<qsizetype>(0, to, places.size() - 1);
        while (now != target) {
            const qsizetype next = now < target ? now + 1 : now - 1;
            folders.swapItemsAt(places[now], places[next]);
            now = next;
        }
    });
}

QList<Destinations::StoredFolder> Destinations::storedFolders() const {
    QList<StoredFolder> folders;
    for (qsizetype i = 0; i < m_listed.size(); ++i) {
        QString problem;
        folderaccess::resolveBookmark(m_listed[i], problem);
        folders.append({m_listedNames[i], folderaccess::placeOf(m_listed[i]), problem});
    }
    return folders;
}

void Destinations::watchForReturn() {
    QStringList places;
    const QVariantList absent = absentBookmarks();
    for (const QVariant& bookmark : absent) {
        if (!bookmark.toByteArray().isEmpty()) places.append(folderaccess::placeOf(bookmark.toByteArray()));
    }
    m_returnWatch.setFolders(places);
}

void Destinations::clampDefaultDestination() {
    const qsizetype count = bookmarks().size();
    if (defaultDestination() > count + 2) setDefaultInt(kDefaultDestinationKey, count + 1);
    constexpr qsizetype kSeparator = 2;
    if (defaultDestination() == kSeparator || defaultDestination() < 0)
        setDefaultInt(kDefaultDestinationKey, 0);
}

void Destinations::rebuildDestinationPopUp() {
    noteListed();
    m_addSheet.rebuild(m_listedNames, defaultDestination());
}

void Destinations::rebuildPreferencesDestinationPopUp() {
    noteListed();
    m_preferences.rebuild(m_listedNames, defaultDestination());
}

void Destinations::chooseNewDestination(DestinationPopUp::Place sender) {
    const auto over = sender == DestinationPopUp::Place::AddSheet ? FilePanels::Over::MainWindow
                                                                  : FilePanels::Over::Preferences;
    m_panels.chooseFolder(over, {}, [this, sender](const QString& folder) { store(folder, sender); });
}

void Destinations::store(const QString& folder, DestinationPopUp::Place sender) {
    QString error;
    const auto bookmark = folderaccess::createBookmark(folder, error);
    if (!bookmark) {
        logError("Error creating bookmark: %@", error);
        return;
    }
    standardUserDefaults().readAgain();
    QVariantList stored = bookmarks();
    const bool isKnown =
        std::ranges::any_of(stored, [&](const QVariant& known) { return known.toByteArray() == *bookmark; });
    if (isKnown) {
        alert_apptitled_over(
            sender == DestinationPopUp::Place::AddSheet ? AlertWindow::Main : AlertWindow::Preferences,
            Texts::tr("This destination is already bookmarked. You can not add it again."),
            Texts::tr("D'oh"));
        setDefaultDestination(0);
        m_addSheet.select(0);
        return;
    }
    QStringList storedNames = titles();
    stored.append(*bookmark);
    storedNames.append(nameOfFolder(folder));
    setDefaultArray(kDestinationBookmarksKey, stored);
    setDefaultArray(kDestinationNamesKey, QVariant(storedNames).toList());
    standardUserDefaults().synchronise();

    const qsizetype added = DestinationPopUp::kFirstFolder + stored.size() - 1;
    rebuildKeepingChoice();
    if (sender == DestinationPopUp::Place::Preferences) {
        setDefaultDestination(added);
    } else {
        m_addSheet.choose(added);
    }
}

bool Destinations::forgetAll() {
    if (!bookmarks().isEmpty() || !absentBookmarks().isEmpty()) {
        Alert question;
        question.title = ApplicationInfo::name();
        question.message = Texts::tr("Do you want to forget all your folders? What is in them stays.");
        question.buttons = {AlertButton::cancelling(Texts::tr("Keep")), Texts::tr("Forget All")};
        question.window = AlertWindow::Preferences;
        if (alert_described(question) != kAlertSecondButton) return false;
    }
    clearDestinations();
    return true;
}

void Destinations::clearDestinations() {
    setDefaultArray(kDestinationBookmarksKey, QVariantList());
    setDefaultArray(kDestinationNamesKey, QVariantList());
    setDefaultInt(kDefaultDestinationKey, 0);
    setDefaultObject(kAbsentDestinationsKey, {});
    setDefaultObject(kAbsentDestinationNamesKey, {});
    setDefaultObject(kAbsentDefaultDestinationKey, {});
    watchForReturn();
    rebuildKeepingChoice();
}

void Destinations::setDefaultDestination(qsizetype index) {
    setDefaultInt(kDefaultDestinationKey, index);
    setDefaultObject(kAbsentDefaultDestinationKey, {});  // The user has made a choice.
    m_preferences.select(index);
}

std::optional<Destinations::OpenedFolder> Destinations::openedFolderFor(const QString& path) const {
    const auto found = std::find_if(m_openedFolders.crbegin(), m_openedFolders.crend(),
                                    [&](const OpenedFolder& folder) { return path.startsWith(folder.path); });
    return found == m_openedFolders.crend() ? std::nullopt : std::optional(*found);
}

QString Destinations::storedFolder(qsizetype number) const {
    return folderaccess::placeOf(bookmarks().value(number).toByteArray());
}

QString Destinations::problemOfFolder(qsizetype number) const {
    QString error;
    folderaccess::resolveBookmark(bookmarks().value(number).toByteArray(), error);
    return error;
}

QString Destinations::openFolder(qsizetype number) const {
    QString error;
    const auto folder = folderaccess::resolveBookmark(bookmarks().value(number).toByteArray(), error);
    if (!folder)
        throw BookmarkProblem(
            makeString("Bookmark Problem: URLByResolvingBookmarkData %@", error).toStdString());
    if (!folderaccess::startAccessing(*folder))
        throw BookmarkProblem(
            makeString("Bookmark Problem: startAccessingSecurityScopedResource %@", *folder).toStdString());
    return *folder;
}
