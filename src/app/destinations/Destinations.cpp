#include "app/destinations/Destinations.h"

#include "settings/Keys.h"
#include "support/alerts/Alert.h"
#include "support/base/Log.h"
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

}  // namespace

Destinations::Destinations(FilePanels& panels, QObject* parent) : QObject(parent), m_panels(panels) {}

void Destinations::restoreAtLaunch() {
    renumberFromOldVersions();
    dropInvalidBookmarks();
    clampDefaultDestination();
    rebuildPreferencesDestinationPopUp();
}

void Destinations::renumberFromOldVersions() {
    if (defaultInt(kHasUpgradedFromPre13Key) != 0) return;
    // The separator behind the first two items came with version 1.3.
    if (defaultDestination() != 0) setDefaultInt(kDefaultDestinationKey, defaultDestination() + 1);
    logInformation("Info: upgrading pre1.3 bookmarks");
    setDefaultInt(kHasUpgradedFromPre13Key, 1);
}

void Destinations::dropInvalidBookmarks() {
    QVariantList keptBookmarks;
    QVariantList keptNames;
    const QVariantList storedBookmarks = bookmarks();
    const QVariantList storedNames = names();
    unsigned long invalid = 0;
    for (qsizetype i = 0; i < storedBookmarks.size(); ++i) {
        QString error;
        const auto folder = folderaccess::resolveBookmark(storedBookmarks[i].toByteArray(), error);
        if (!folder || !folderaccess::startAccessing(*folder)) {
            ++invalid;
            continue;
        }
        m_openedFolders.append({*folder, true});
        folderaccess::stopAccessing(*folder);
        keptBookmarks.append(storedBookmarks[i]);
        keptNames.append(i < storedNames.size() ? storedNames[i] : nameOfFolder(*folder));
    }
    if (invalid > 0) logError("Info: going to delete %lu invalid bookmarks", invalid);
    if (invalid == 0 && storedNames.size() == storedBookmarks.size()) return;
    setDefaultArray(kDestinationBookmarksKey, keptBookmarks);
    setDefaultArray(kDestinationNamesKey, keptNames);
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
            "This destination is already bookmarked. You can not add it again.", "D'oh");
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
        m_addSheet.select(added);
    }
}

void Destinations::clearDestinations() {
    setDefaultArray(kDestinationBookmarksKey, QVariantList());
    setDefaultArray(kDestinationNamesKey, QVariantList());
    setDefaultInt(kDefaultDestinationKey, 0);
    rebuildDestinationPopUp();
    rebuildPreferencesDestinationPopUp();
}

void Destinations::setDefaultDestination(qsizetype index) {
    setDefaultInt(kDefaultDestinationKey, index);
    m_preferences.select(index);
}

std::optional<Destinations::OpenedFolder> Destinations::openedFolderFor(const QString& path) const {
    const auto found = std::find_if(m_openedFolders.crbegin(), m_openedFolders.crend(),
                                    [&](const OpenedFolder& folder) { return path.startsWith(folder.path); });
    return found == m_openedFolders.crend() ? std::nullopt : std::optional(*found);
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
