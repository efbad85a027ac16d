#pragma once

#include <QString>

class WebViewFactory;

/// Where windows get their web views from.
class WebEngine {
public:
    WebEngine() = default;
    WebEngine(const WebEngine&) = delete;
    WebEngine& operator=(const WebEngine&) = delete;
    virtual ~WebEngine() = default;

    /// What speaks against using it, for the log; empty: nothing. Quick, and loads nothing.
    virtual QString obstacle() const = 0;
    /// Loads and starts the engine at the first call, which takes its time. Null, and `why` for the log,
    /// where that fails. Not owned by the caller.
    virtual WebViewFactory* factory(QString& why) = 0;
};

/// The engine in our plugin, which lies beside the program in the build tree and in an installed tree.
class PluginWebEngine : public WebEngine {
public:
    QString obstacle() const override;
    WebViewFactory* factory(QString& why) override;

private:
    WebViewFactory* m_factory = nullptr;
};
