#include "app/destinations/Destinations.h"

#include "settings/Keys.h"
#include "support/alerts/Alert.h"
#include "support/base/Format.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"

#include <QDir>

#include <algorithm>

namespace {

QVariantList bookmarks() {
    return defaultArray(kDestinationBookmarksKey).value_or(QVariantList());
}

QVariantList names() {
    return defaultArray(kDestinationNamesKey).value_or(QVariantList());
}

QStringList titles() {
    QStringList result;
    const QVariantList stored = names();
    for (const QVariant& name : stored)
        result.append(name.toString());
    return result;
}

qsizetype defaultDestination() {
    return static_cast<qsizetype>(defaultInt(kDefaultDestinationKey));
}

QString nameOfFolder(const QString& folder) {
    const QString name = QDir(folder).dirName();
    return name.isEmpty() ? folder : name;
}

/// The absent folders, at their positions in the whole list; empty elements stand for the present ones.
QVariantList absentBookmarks() {
    return defaultArray(kAbsentDestinationsKey).value_or(QVariantList());
}

/// `absent` in the format of absentBookmarks().
void rememberAbsent(QVariantList absent, const QByteArray& absentDefault) {
    while (!absent.isEmpty() && absent.last().toByteArray().isEmpty())
        absent.removeLast();
    setDefaultObject(kAbsentDestinationsKey, absent.isEmpty() ? QVariant() : QVariant(absent));
    setDefaultObject(kAbsentDefaultDestinationKey,
                     absentDefault.isEmpty() ? QVariant() : QVariant(absentDefault));
}

struct KnownFolder {
    QByteArray bookmark;
    QString name;
    bool isDefault = false;
    bool wasAbsent = false;
};

/// The stored folders, with the absent ones at their positions among them.
QList<KnownFolder> knownFolders() {
    QList<KnownFolder> folders;
    const QVariantList stored = bookmarks();
    const QVariantList storedNames = names();
    const qsizetype preselected = defaultDestination() - DestinationPopUp::kFirstFolder;
    for (qsizetype i = 0; i < stored.size(); ++i) {
        const QByteArray bookmark = stored[i].toByteArray();
        const QString name = i < storedNames.size() ? storedNames[i].toString()
                                                    : nameOfFolder(folderaccess::placeOf(bookmark));
        folders.append({bookmark, name, i == preselected, false});
    }
    // Keep another default destination that was chosen meanwhile.
    const QByteArray absentDefault =
        defaultDestination() == 0 ? defaultObject(kAbsentDefaultDestinationKey).toByteArray() : QByteArray();
    const QVariantList absent = absentBookmarks();
    for (qsizetype i = 0; i < absent.size(); ++i) {
        const QByteArray bookmark = absent[i].toByteArray();
        if (bookmark.isEmpty()) continue;
        const auto known = std::ranges::find(folders, bookmark, &KnownFolder::bookmark);
        const bool isDefault = bookmark == absentDefault;
        if (known != folders.end()) {
            known->isDefault |= isDefault;  // The user added it again meanwhile.
        } else {
            folders.insert(qMin(i, folders.size()),
                           {bookmark, nameOfFolder(folderaccess::placeOf(bookmark)), isDefault, true});
        }
    }
    return folders;
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

Destinations::Destinations(FilePanels& panels, QObject* parent) : QObject(parent), m_panels(panels) {
    connect(&m_returnWatch, &ReturnWatch::mayHaveReturned, this, &Destinations::restoreReturned);
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
    QVariantList keptBookmarks;
    QVariantList keptNames;
    QVariantList absent;
    QByteArray absentDefault;
    std::optional<qsizetype> newDefault;
    const QList<KnownFolder> folders = knownFolders();
    for (const KnownFolder& folder : folders) {
        const QString place = folderaccess::placeOf(folder.bookmark);
        // A folder that disappears while the application runs stays in the list.
        const bool isChecked = folder.wasAbsent || occasion == Occasion::Launch;
        if (isChecked && !isUsable(folder.bookmark)) {
            absent.append(folder.bookmark);
            if (!folder.wasAbsent) changes.gone.append(place);
            if (!folder.isDefault) continue;
            absentDefault = folder.bookmark;
            newDefault = 0;
            continue;
        }
        absent.append(QByteArray());
        if (folder.isDefault) newDefault = DestinationPopUp::kFirstFolder + keptBookmarks.size();
        keptBookmarks.append(folder.bookmark);
        keptNames.append(folder.name);
        if (folder.wasAbsent) changes.returned.append(place);
        if (isChecked) m_openedFolders.append({place, true});
    }
    if (!changes.gone.isEmpty())
        logError("Info: going to delete %lu invalid bookmarks",
                 static_cast<unsigned long>(changes.gone.size()));
    if (keptBookmarks != bookmarks() || names().size() != keptNames.size()) {
        setDefaultArray(kDestinationBookmarksKey, keptBookmarks);
        setDefaultArray(kDestinationNamesKey, keptNames);
    }
    if (newDefault) setDefaultInt(kDefaultDestinationKey, *newDefault);
    rememberAbsent(absent, absentDefault);
    return changes;
}

void Destinations::restoreReturned() {
    const qsizetype selected = m_addSheet.selected();
    const bool isChosen = m_addSheet.isChosen();
    const bool isFolder = selected >= DestinationPopUp::kFirstFolder &&
                          selected < m_addSheet.items().size() &&
                          m_addSheet.items()[selected].kind == DestinationItem::Kind::Folder;
    const QVariant chosen =
        isFolder ? bookmarks().value(selected - DestinationPopUp::kFirstFolder) : QVariant();
    const QStringList returned = updateStoredFolders(Occasion::Return).returned;
    if (returned.isEmpty()) return;
    watchForReturn();
    rebuildPreferencesDestinationPopUp();
    // The user may be choosing a folder for a movie: keep the selected folder, even if its number has
    // changed.
    constexpr qsizetype kNone = -1;
    m_addSheet.rebuild(titles(), isFolder ? DestinationPopUp::kFirstFolder + bookmarks().indexOf(chosen)
                                 : selected < DestinationPopUp::kFirstFolder ? selected
                                                                             : kNone);
    if (isChosen) m_addSheet.choose(m_addSheet.selected());
    Q_EMIT message(returnedText(returned));
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
    m_addSheet.rebuild(titles(), defaultDestination());
}

void Destinations::rebuildPreferencesDestinationPopUp() {
    m_preferences.rebuild(titles(), defaultDestination());
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
    QVariantList storedNames = names();
    stored.append(*bookmark);
    storedNames.append(nameOfFolder(folder));
    setDefaultArray(kDestinationBookmarksKey, stored);
    setDefaultArray(kDestinationNamesKey, storedNames);
    standardUserDefaults().synchronise();

    const qsizetype added = DestinationPopUp::kFirstFolder + stored.size() - 1;
    rebuildPreferencesDestinationPopUp();
    if (sender == DestinationPopUp::Place::Preferences) {
        setDefaultDestination(added);
    } else {
        rebuildDestinationPopUp();
        m_addSheet.choose(added);
    }
}

void Destinations::clearDestinations() {
    setDefaultArray(kDestinationBookmarksKey, QVariantList());
    setDefaultArray(kDestinationNamesKey, QVariantList());
    setDefaultInt(kDefaultDestinationKey, 0);
    rememberAbsent({}, {});
    watchForReturn();
    rebuildDestinationPopUp();
    rebuildPreferencesDestinationPopUp();
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
