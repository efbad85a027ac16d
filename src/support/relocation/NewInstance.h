#pragma once

#include <QProcessEnvironment>
#include <QString>

/// Starts another instance of the application from the new place of its folder. Callable from any thread.
namespace newinstance {

struct Start {
    QString program;
    QProcessEnvironment environment;
};

/// How to start `program`, which was in the application folder `bundle`, from `newBundle`. Paths in the
/// environment that were in the old folder are adapted.
Start startAt(const QString& newBundle, const QString& bundle, const QString& program,
              QProcessEnvironment environment);

/// Starts this program detached, without arguments. Returns false if it cannot be started there; an empty
/// `newBundle` means that the folder does not exist.
bool launch(const QString& newBundle);

}  // namespace newinstance
