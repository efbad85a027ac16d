#include "documentation/rules/DocumentationPages.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"

#include <QDir>

namespace documentation {

namespace {

DocumentationPage html(const QString& title, const QString& name) {
    const QString online = ApplicationInfo::value("DocumentationURL");
    return {title, name, online.isEmpty() ? QString() : online + name, DocumentationPage::Kind::Html};
}

}  // namespace

QList<DocumentationPage> pages() {
    return {html(Texts::tr("Quick Start"), "quick-start.html"),
            html(Texts::tr("Audio and Players"), "audio-and-players.html"),
            html(Texts::tr("Subtitles"), "subtitles.html"),
            html(Texts::tr("Troubleshooting"), "troubleshooting.html"),
            html(Texts::tr("What's New"), "whats-new.html"),
            // The licences of this very version: no newer copy replaces them.
            {Texts::tr("Licences"), "licences.rtf", {}, DocumentationPage::Kind::Rtf}};
}

QString folder() {
    return ApplicationInfo::resourceFolder() + "/documents";
}

QString pathOf(const DocumentationPage& page) {
    return folder() + u'/' + page.name;
}

std::optional<int> indexOf(const QUrl& address) {
    if (!address.isLocalFile()) return std::nullopt;
    const QString path = QDir::cleanPath(address.toLocalFile());
    const QList<DocumentationPage> all = pages();
    for (int i = 0; i < all.size(); ++i) {
        if (QDir::cleanPath(pathOf(all[i])) == path) return i;
    }
    return std::nullopt;
}

}  // namespace documentation
