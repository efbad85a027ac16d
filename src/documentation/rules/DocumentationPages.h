#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

/// A page of the documentation that comes with the application.
struct DocumentationPage {
    enum class Kind { Html, Rtf };

    QString title;          ///< In the user's language.
    QString name;           ///< Its file in the documents folder.
    QString remoteHTMLURL;  ///< Its online copy, not expanded; empty: none.
    Kind kind = Kind::Html;
};

namespace documentation {

/// In the order of their tabs: a page's place is the tag of its menu item.
QList<DocumentationPage> pages();

/// `documents` in the resource folder.
QString folder();
QString pathOf(const DocumentationPage& page);

/// The place of the page whose file `address` names, whatever stands behind "#"; nothing: it is none of them.
std::optional<int> indexOf(const QUrl& address);

}  // namespace documentation
