#include "documentation/plugin/WebViewPlugin.h"

#include "documentation/plugin/Engine.h"
#include "documentation/plugin/PXWebView.h"

void WebViewPlugin::start() {
    engine::start();
}

WebView* WebViewPlugin::makeView(const WebViewServices& services, QWidget* parent) {
    return new PXWebView(services, parent);
}
