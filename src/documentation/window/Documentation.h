#pragma once

#include "documentation/window/DocumentationWindow.h"

#include <QObject>
#include <QPointer>

class AppDelegate;
class WebEngine;

/// Executes the command that opens the documentation: in its window, or in the user's browser if the engine
/// cannot run. Main thread only.
class Documentation : public QObject {
    Q_OBJECT

public:
    /// `delegate` and `engine` must outlive this.
    Documentation(AppDelegate& delegate, WebEngine& engine, WindowParts parts);
    ~Documentation() override;

    /// Null while it is closed.
    DocumentationWindow* documentationWindow() const { return m_window; }

Q_SIGNALS:
    /// Message for the status area.
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
