#pragma once

#include "documentation/rules/WebViewFactory.h"

#include <QObject>

/// The plugin's entry point. Main thread only.
class WebViewPlugin : public QObject, public WebViewFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID WebViewFactory_iid)
    Q_INTERFACES(WebViewFactory)

public:
    void start() override;
    WebView* makeView(const WebViewServices& services, QWidget* parent) override;
};
