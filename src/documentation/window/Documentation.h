#pragma once

#include "documentation/window/DocumentationWindow.h"

#include <QObject>
#include <QPointer>

class AppDelegate;
class WebEngine;

/// Follows the command that opens the documentation: in its window, or where no engine can show it there in
/// the user's browser.
class Documentation : public QObject {
    Q_OBJECT

public:
    /// Delegate and engine outlive this.
    Documentation(AppDelegate& delegate, WebEngine& engine, WindowParts parts);
    ~Documentation() override;

    /// Null while it is closed.
    DocumentationWindow* documentationWindow() const { return m_window; }

Q_SIGNALS:
    /// Tell the user in passing.
    void message(const QString& text);
    /// The user wants the main window, which may be closed.
    void mainWindowRequested();

private:
    void open(int tag);
    void openInBrowser(int tag, const QString& why);

    WebEngine& m_engine;
    WindowParts m_parts;
    QPointer<DocumentationWindow> m_window;
};
