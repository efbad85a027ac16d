#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

/// A page of the installed documentation.
struct DocumentationPage {
    enum class Kind { Html, Rtf };

    QString title;          ///< In the user's language.
    QString name;           ///< File name in the documents folder.
    QString remoteHTMLURL;  ///< Address of its online copy, not expanded; empty: none.
    Kind kind = Kind::Html;
};

namespace documentation {

/// In the order of the tabs; a page's index is the tag of its menu item. Callable from any thread.
QList<DocumentationPage> pages();

/// `documents` in the resource folder.
QString folder();
QString pathOf(const DocumentationPage& page);

/// The index of the page whose file `address` refers to, ignoring the fragment; null: none of them.
std::optional<int> indexOf(const QUrl& address);

}  // namespace documentation
