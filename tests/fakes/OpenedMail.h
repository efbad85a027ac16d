#pragma once

#include <QUrl>

/// The parts of a mail link, as a mail program parses them.
struct OpenedMail {
    explicit OpenedMail(const QUrl& link) {
        const QString text = QString::fromLatin1(link.toEncoded());
        const auto decoded = [](const QString& part) { return QUrl::fromPercentEncoding(part.toLatin1()); };
        address = decoded(text.section(u'?', 0, 0).section(u':', 1));
        const QStringList fields = text.section(u'#', 0, 0).section(u'?', 1).split(u'&');
        for (const QString& field : fields) {
            if (field.startsWith("subject=")) subject = decoded(field.section(u'=', 1));
            if (field.startsWith("body=")) body = decoded(field.section(u'=', 1));
        }
    }

    QString address;
    QString subject;
    QString body;
};
