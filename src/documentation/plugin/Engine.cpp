#include "documentation/plugin/Engine.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QOpenGLContext>
#include <QPalette>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QStorageInfo>
#include <QWebEngineProfile>

QT_BEGIN_NAMESPACE
// Exported by QtGui for the engine, but in no header.
extern Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);
QT_END_NAMESPACE

namespace engine {

namespace {

bool theStartWasDark = false;

/// Sets a variable of the environment for as long as this lives: what we start later does not see it.
class PassingVariable {
public:
    PassingVariable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name)) {
        qputenv(name, value);
    }
    ~PassingVariable() {
        if (m_wasSet) {
            qputenv(m_name, m_before);
        } else {
            qunsetenv(m_name);
        }
    }
    PassingVariable(const PassingVariable&) = delete;
    PassingVariable& operator=(const PassingVariable&) = delete;

private:
    const char* m_name;
    const bool m_wasSet;
    const QByteArray m_before;
};

/// Where there is no room for shared memory, the engine ends the process, or each page dies.
bool sharedMemoryHasRoom() {
    const QString kFolder = "/dev/shm";
    constexpr qint64 kEnough = 32 << 20;  // bytes
    return QFileInfo(kFolder).isWritable() && QStorageInfo(kFolder).bytesAvailable() >= kEnough;
}

QByteArray flags() {
    QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    flags +=
        isDarkNow() ? " --blink-settings=preferredColorScheme=0" : " --blink-settings=preferredColorScheme=1";
    if (!sharedMemoryHasRoom()) flags += " --disable-dev-shm-usage";
    return flags;
}

}  // namespace

bool isDarkNow() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

bool startedDark() {
    return theStartWasDark;
}

void start() {
    theStartWasDark = isDarkNow();
    // Text needs no graphics hardware, and its drivers are what engines crash on.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // The engine looks at the context that all others share. An attribute set before the application starts
    // would make one, and load the drivers in every run; this one is never created and does as well.
    if (!QOpenGLContext::globalShareContext()) qt_gl_set_global_share_context(new QOpenGLContext);
    const PassingVariable chromium("QTWEBENGINE_CHROMIUM_FLAGS", flags());
    // It asks what OpenGL can do, too, which would load the drivers only to hear it: 57 MiB.
    const PassingVariable xcb("QT_XCB_GL_INTEGRATION", "none");
    const QWebEngineProfile first;
}

std::shared_ptr<QWebEngineProfile> profile() {
    static std::weak_ptr<QWebEngineProfile> kept;
    std::shared_ptr<QWebEngineProfile> profile = kept.lock();
    if (!profile) {
        // One without a name keeps cookies and files in memory only.
        profile = std::make_shared<QWebEngineProfile>();
        kept = profile;
    }
    return profile;
}

}  // namespace engine
