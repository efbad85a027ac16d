#pragma once

#include <QString>

#include <functional>
#include <optional>

/// Mails that the user's mail program opens and that the user sends, or does not.
namespace mail {

struct Message {
    QString address;
    QString subject;
    QString body;
    /// The body as people can read it, where `body` is not for people.
    std::optional<QString> readableBody;
};

/// A message with the settings file, which is saved before, in it. `compose` makes the body around the
/// settings: it is called with them in Base64 without line breaks, as they are sent, and with their plain
/// text.
Message withSettings(const QString& address, const QString& subject,
                     const std::function<QString(const QString& settings)>& compose);

/// The mailto link, percent-escaped: whatever the parts hold, they arrive as they are.
QString link(const QString& address, const QString& subject, const QString& body);

/// Opens the message in the user's mail program. A body that is not for people is first shown in readable
/// form, and opened only if the user agrees. A message that is too long for a link is saved to a file in the
/// application's Documents folder, which the mail names and the file manager shows. Where no mail program
/// opens, the text goes to the clipboard, or where there is none to a file, and the user is told. Main thread
/// only; blocks until all alerts are answered.
void open(const Message& message);

}  // namespace mail
