#pragma once

#include "ui/DocumentationWindow.h"

#include <QObject>
#include <QPointer>

class AppDelegate;
class WebEngine;

/// Follows the command that opens the documentation: in its window, or where no engine can show it there in
/// the user's browser.
class Documentation : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    Documentation(AppDelegate& delegate, WebEngine& engine);
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
    QPointer<DocumentationWindow> m_window;
};
