#include "support/relocation/NewInstance.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

namespace newinstance {

Start startAt(const QString& newBundle, const QString& bundle, const QString& program,
              QProcessEnvironment environment) {
    constexpr auto kResources = "RAVELIN_RESOURCES";
    const QString resources = environment.value(kResources);
    if (!resources.isEmpty()) {
        const QString absolute = QDir(resources).absolutePath();
        environment.insert(kResources, files::withFolderMoved(absolute, bundle, newBundle));
    }
    return {files::withFolderMoved(program, bundle, newBundle), environment};
}

bool launch(const QString& newBundle) {
    if (newBundle.isEmpty()) return false;
    const Start start =
        startAt(newBundle, ApplicationInfo::bundlePath(), QCoreApplication::applicationFilePath(),
                QProcessEnvironment::systemEnvironment());
    QProcess process;
    process.setProgram(start.program);
    process.setProcessEnvironment(start.environment);
    // Our working directory may be on a volume that the user wants to unmount.
    process.setWorkingDirectory(QDir::home().exists() ? QDir::homePath() : QDir::rootPath());
    const bool isStarted = process.startDetached();
    if (!isStarted) logError("Error: %@ could not be started: %@", start.program, process.errorString());
    return isStarted;
}

}  // namespace newinstance
