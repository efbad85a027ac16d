#include "documentation/WebViewPlugin.h"

#include "documentation/Engine.h"
#include "documentation/PXWebView.h"

void WebViewPlugin::start() {
    engine::start();
}

WebView* WebViewPlugin::makeView(const WebViewServices& services, QWidget* parent) {
    return new PXWebView(services, parent);
}
