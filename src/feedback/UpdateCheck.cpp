#include "feedback/UpdateCheck.h"

#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "support/desktop/Desktop.h"

#include <QScopedValueRollback>

#include <algorithm>

namespace feed {

std::optional<QString> attribute(QStringView feed, QStringView name) {
    const QString beginning = makeString("%@=\"", name.toString());
    const qsizetype begin = feed.indexOf(beginning);
    if (begin < 0) return std::nullopt;
    const QStringView rest = feed.sliced(begin + beginning.size());
    const qsizetype end = rest.indexOf(u'"');
    if (end < 0) return std::nullopt;
    return rest.first(end).toString();
}

std::optional<qint32> buildNumber(QStringView build) {
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    if (!std::ranges::all_of(build, isDigit)) return std::nullopt;
    return text::integerValue(build);
}

}  // namespace feed

namespace {

// These texts are not translated.

void showFailure() {
    alert("Update Check Failed",
          "The update-check failed - please check your internet connection and try again.", "OK");
}

void showUpdate(const QString& version, qint32 build) {
    const QString message = makeString(
        "An Update is available! You have version '%@ (%i)' but the newest version is '%@ (%i)'. Please use our 'Fettle' to update to the newest version - it can also update your other apps!",
        ApplicationInfo::version(), ApplicationInfo::buildNumber(), version, build);
    if (alert("Update Available", message, "Open Fettle Homepage", "Cancel") == kAlertFirstButton)
        sharedDesktop().openUrl(QUrl(ApplicationInfo::value("FettleHomepage")));
}

void showResult(const QString& feed) {
    const auto text = feed::attribute(feed, u"sparkle:version");
    const auto build = text ? feed::buildNumber(*text) : std::nullopt;
    if (!build) {
        showFailure();
    } else if (*build > ApplicationInfo::buildNumber()) {
        // An item without a readable version is named by its build.
        showUpdate(feed::attribute(feed, u"sparkle:shortVersionString").value_or(*text), *build);
    } else {
        alert("No Update Available", "This app is fully up-to-date.", "Cool");
    }
}

}  // namespace

void checkForUpdates(const Fetcher& fetcher) {
    static bool isUnderWay = false;
    if (isUnderWay) return;  // The waits below run the event loop.
    const QScopedValueRollback guard(isUnderWay, true);
    const download::Page page = fetcher(QUrl(ApplicationInfo::value("SUFeedURL")));
    if (page.isAbandoned) return;
    if (const auto feed = page.text()) {
        showResult(*feed);
    } else {
        showFailure();
    }
}
