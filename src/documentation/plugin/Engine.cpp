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

bool isStartedDark = false;

/// Sets an environment variable during its lifetime, so that later child processes do not inherit it.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name)) {
        qputenv(name, value);
    }
    ~ScopedVariable() {
        if (m_wasSet) {
            qputenv(m_name, m_before);
        } else {
            qunsetenv(m_name);
        }
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    const bool m_wasSet;
    const QByteArray m_before;
};

/// Without enough shared memory, the engine ends the process, or each page crashes.
bool hasEnoughSharedMemory() {
    const QString folder = "/dev/shm";
    constexpr qint64 kEnough = 32 << 20;  // bytes
    return QFileInfo(folder).isWritable() && QStorageInfo(folder).bytesAvailable() >= kEnough;
}

QByteArray flags() {
    QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    flags +=
        isDarkNow() ? " --blink-settings=preferredColorScheme=0" : " --blink-settings=preferredColorScheme=1";
    if (!hasEnoughSharedMemory()) flags += " --disable-dev-shm-usage";
    return flags;
}

}  // namespace

bool isDarkNow() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

bool startedDark() {
    return isStartedDark;
}

void start() {
    isStartedDark = isDarkNow();
    // Text needs no graphics hardware, and graphics drivers cause most crashes of engines.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // The engine requires a global share context. Qt::AA_ShareOpenGLContexts would create one and load the
    // drivers in every run; a context object that is never created is sufficient.
    if (!QOpenGLContext::globalShareContext()) qt_gl_set_global_share_context(new QOpenGLContext);
    const ScopedVariable chromium("QTWEBENGINE_CHROMIUM_FLAGS", flags());
    // The engine also queries OpenGL's features, which would load the drivers (57 MiB) only for this.
    const ScopedVariable xcb("QT_XCB_GL_INTEGRATION", "none");
    const QWebEngineProfile first;
}

std::shared_ptr<QWebEngineProfile> profile() {
    static std::weak_ptr<QWebEngineProfile> kept;
    std::shared_ptr<QWebEngineProfile> profile = kept.lock();
    if (!profile) {
        // A profile without a name stores cookies and files in memory only.
        profile = std::make_shared<QWebEngineProfile>();
        kept = profile;
    }
    return profile;
}

}  // namespace engine
