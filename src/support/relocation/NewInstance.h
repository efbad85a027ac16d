#pragma once

#include <QProcessEnvironment>
#include <QString>

/// Starts the application once more, from the place that its folder was moved to.
namespace newinstance {

struct Start {
    QString program;
    QProcessEnvironment environment;
};

/// How to start `program`, which lay in the application folder `bundle`, from `newBundle`. What the
/// environment names in the old place goes along.
Start startAt(const QString& newBundle, const QString& bundle, const QString& program,
              QProcessEnvironment environment);

/// Starts this program, without arguments, on its own feet. False: it cannot be started from there; empty:
/// there is no such place.
bool launch(const QString& newBundle);

}  // namespace newinstance
