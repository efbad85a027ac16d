#pragma once

#include <QString>

class WebViewFactory;

/// Provides windows with the factory of web views. Main thread only.
class WebEngine {
public:
    WebEngine() = default;
    WebEngine(const WebEngine&) = delete;
    WebEngine& operator=(const WebEngine&) = delete;
    virtual ~WebEngine() = default;

    /// Why the engine cannot be used, for the log; empty if it can. Quick; loads nothing.
    virtual QString obstacle() const = 0;
    /// Loads and starts the engine at the first call, which is slow. On failure returns null and sets `why`,
    /// for the log. The caller does not own the factory.
    virtual WebViewFactory* factory(QString& why) = 0;
};

/// The engine in our plugin, which is installed next to the program, in the build tree, too.
class PluginWebEngine : public WebEngine {
public:
    QString obstacle() const override;
    WebViewFactory* factory(QString& why) override;

private:
    WebViewFactory* m_factory = nullptr;
};
