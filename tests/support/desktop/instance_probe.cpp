// One instance of a single-instance application:
//     instance_probe ID PATIENCE_MILLISECONDS PATH...
// Prints its role on standard output and, as the first instance, each hand-over as a line of JSON. Ends at
// the end of standard input.
#include "support/desktop/SingleInstance.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    SingleInstance instance(arguments.value(1), arguments.value(2).toInt());
    const auto tell = [&instance](const QString& what, const QStringList& paths) {
        const QJsonObject told{{"what", what},
                               {"paths", QJsonArray::fromStringList(paths)},
                               {"token", instance.activationToken()}};
        std::printf("%s\n", QJsonDocument(told).toJson(QJsonDocument::Compact).constData());
        std::fflush(stdout);
    };
    QObject::connect(&instance, &SingleInstance::opened, [&](const auto& paths) { tell("opened", paths); });
    QObject::connect(&instance, &SingleInstance::activated, [&tell] { tell("activated", {}); });
    switch (instance.begin(arguments.mid(3))) {
        case SingleInstance::Role::First:
            tell("first", {});
            break;
        case SingleInstance::Role::HandedOver:
            tell("handed over", {});
            return 0;
        case SingleInstance::Role::NoAnswer:
            tell("no answer", {});
            return 0;
    }
    const QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
