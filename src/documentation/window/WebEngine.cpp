#include "documentation/window/WebEngine.h"

#include "documentation/rules/WebViewFactory.h"
#include "documentation/window/WebEngineCheck.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>

namespace {

constexpr const char* kPluginFile = "libravelin_webview.so";

/// Empty if the plugin is not installed.
QString pluginPath() {
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char* folder : {"../lib/ravelin", "../" RAVELIN_LIBRARY_FOLDER "/ravelin"}) {
        const QString path = QDir::cleanPath(program.filePath(folder) + u'/' + kPluginFile);
        if (QFileInfo(path).isFile()) return path;
    }
    return {};
}

/// Suppresses the engine's expected warnings on standard error while it starts: that it is loaded late, by a
/// plugin, and renders without graphics hardware.
class QuietStart {
public:
    QuietStart() { theNextHandler = qInstallMessageHandler(handle); }
    ~QuietStart() { qInstallMessageHandler(theNextHandler); }
    QuietStart(const QuietStart&) = delete;
    QuietStart& operator=(const QuietStart&) = delete;

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message) {
        const bool isExpected = message.contains(u"seems to be initialized from a plugin") ||
                                message.startsWith(u"No suitable graphics backend found") ||
                                qstrcmp(context.category, "qt.webenginecontext") == 0;
        if (type != QtFatalMsg && isExpected) return;
        theNextHandler(type, context, message);
    }

    static inline QtMessageHandler theNextHandler = nullptr;
};

}  // namespace

QString PluginWebEngine::obstacle() const {
    if (m_factory) return {};
    if (pluginPath().isEmpty()) return "The plugin for web pages is not installed.";
    return webengine::obstacle();
}

WebViewFactory* PluginWebEngine::factory(QString& why) {
    if (m_factory) return m_factory;
    why = obstacle();
    if (!why.isEmpty()) return nullptr;
    const QuietStart quiet;
    QPluginLoader loader(pluginPath());
    auto* factory = qobject_cast<WebViewFactory*>(loader.instance());
    if (!factory) {
        why = loader.errorString();
        return nullptr;
    }
    factory->start();
    return m_factory = factory;
}
