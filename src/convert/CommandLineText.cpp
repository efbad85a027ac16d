#include "convert/CommandLineText.h"

#include <QRegularExpression>

namespace {

QString quoted(QString argument) {
    static const QRegularExpression harmless(QStringLiteral("^[A-Za-z0-9_@%+=:,./-]+$"));
    if (harmless.match(argument).hasMatch()) return argument;
    argument.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + argument + u'\'';
}

}  // namespace

QString commandLineText(const QStringList& arguments) {
    QString line = "ffmpeg";
    for (const QString& argument : arguments)
        line += u' ' + quoted(argument);
    return line;
}
