#include "fakes/TestHome.h"

#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "support/store/Defaults.h"
#include "support/store/LogRings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

/// Tests show no windows on the desktop of who runs them.
[[maybe_unused]] static const bool isOffscreen = qputenv("QT_QPA_PLATFORM", "offscreen");

TestHome::TestHome() {
    qputenv("XDG_CONFIG_HOME", m_folder.filePath("config").toUtf8());
    qputenv("XDG_DATA_HOME", m_folder.filePath("data").toUtf8());
    useSettingsFile(m_folder.filePath("config/settings.json"));
    settings::registerDefaults();
    // The fake tool writes no movies that could be compared with their sources.
    standardUserDefaults().setOverride(kProveResultsKey, qint64{0});
    logrings::install();
    setAlertPresenter(&presenter);
    setSharedDesktop(&desktop);
}

TestHome::~TestHome() {
    useSettingsFile({});  // Later writes must not create the folder again.
    setSharedDesktop(nullptr);
    setAlertPresenter(nullptr);
}

QString TestHome::write(const QString& name, const QByteArray& contents) const {
    const QString path = m_folder.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}
