#include "support/reports/Mail.h"

#include "support/alerts/Alert.h"
#include "support/alerts/SaveSettings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"

#include <QFile>
#include <QUrl>

namespace mail {

namespace {

/// In bytes. The kernel limits a program's argument to 128 KiB, and mail programs accept less.
constexpr qsizetype kLongestLink = 100 * 1024;

QString escaped(const QString& text, const QByteArray& allowed = {}) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text, allowed));
}

QString written(const Message& message, const QString& body) {
    return makeString("To: %@\nSubject: %@\n\n%@", message.address, message.subject, body);
}

bool userAgrees(const Message& message) {
    const QString prompt = Texts::tr(
        "This will be sent to support when you send the mail. The preferences, which you can read here, are encoded in it.");
    return alert_outputtext(prompt, written(message, *message.readableBody),
                            {Texts::tr("Open Mail"), Texts::tr("Cancel")}) == kAlertFirstButton;
}

/// Saves the message to a file and returns its path; null on failure.
std::optional<QString> saved(const Message& message) {
    const QString path =
        files::claimUniqueFile(ApplicationInfo::documentsFolder() + u'/' +
                               makeString("%@ Support Request.txt", ApplicationInfo::name()));
    QFile file(path);
    const QByteArray text = written(message, message.body).toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush()) return path;
    file.remove();
    return std::nullopt;
}

bool opened(const Message& message, const QString& body) {
    const QString address = link(message.address, message.subject, body);
    return address.size() <= kLongestLink &&
           sharedDesktop().openUrl(QUrl::fromEncoded(address.toLatin1(), QUrl::StrictMode));
}

/// `file` is the file that already contains the text; null: none.
void showNotOpened(const Message& message, std::optional<QString> file) {
    const QString text = written(message, message.body);
    if (sharedDesktop().copyToClipboard(text)) {
        if (file) QFile::remove(*file);
        alert_apptitled(
            Texts::tr(
                "The mail could not be opened in a mail program. Its text has been copied: please paste it into a mail to %1 before you close this message.")
                .arg(message.address),
            Texts::tr("OK"));
        return;
    }
    if (!file) file = saved(message);
    if (file) {
        alert_apptitled(
            Texts::tr(
                "The mail could not be opened in a mail program. Its text is in the file '%1'. Please send it to %2.")
                .arg(*file, message.address),
            Texts::tr("OK"));
    } else {
        alert_outputtext(
            Texts::tr("The mail could not be opened in a mail program. Please send this text to %1.")
                .arg(message.address),
            text, {Texts::tr("OK")});
    }
}

}  // namespace

Message withSettings(const QString& address, const QString& subject,
                     const std::function<QString(const QString& settings)>& compose) {
    saveSettings();
    const QByteArray settings = files::contents(standardUserDefaults().filePath()).value_or(QByteArray());
    return {address, subject, compose(QString::fromLatin1(settings.toBase64())),
            compose(QString::fromUtf8(settings))};
}

QString link(const QString& address, const QString& subject, const QString& body) {
    // Escape each part separately: an unescaped "&" or "#" would end it.
    return makeString("mailto:%@?subject=%@&body=%@", escaped(address, "@"), escaped(subject), escaped(body));
}

void open(const Message& message) {
    if (message.readableBody && !userAgrees(message)) return;
    if (link(message.address, message.subject, message.body).size() <= kLongestLink) {
        if (!opened(message, message.body)) showNotOpened(message, std::nullopt);
        return;
    }
    const auto file = saved(message);
    const QString hint = makeString("The text of this mail is in the file \"%@\" - please attach it.", file);
    if (file && opened(message, hint)) {
        sharedDesktop().reveal(*file);
    } else {
        showNotOpened(message, file);
    }
}

}  // namespace mail
