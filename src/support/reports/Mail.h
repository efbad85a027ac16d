#pragma once

#include <QString>

#include <functional>
#include <optional>

/// Mails that are opened in the user's mail program, for the user to send.
namespace mail {

struct Message {
    QString address;
    QString subject;
    QString body;
    /// The body in readable form, if `body` is encoded.
    std::optional<QString> readableBody;
};

/// A message that includes the settings file, which is saved first. `compose` returns the body for the given
/// settings: it is called with them in Base64 without line breaks, as they are sent, and with their plain
/// text. Main thread only.
Message withSettings(const QString& address, const QString& subject,
                     const std::function<QString(const QString& settings)>& compose);

/// The mailto link; all parts are percent-encoded. Callable from any thread.
QString link(const QString& address, const QString& subject, const QString& body);

/// Opens the message in the user's mail program. An encoded body is first shown in readable form, and opened
/// only if the user agrees. A message that is too long for a link is saved to a file in the application's
/// Documents folder, which the mail names and the file manager shows. If no mail program opens, the text is
/// copied to the clipboard, or saved to a file if there is no clipboard, and an alert informs the user. Main
/// thread only; blocks until all alerts are answered.
void open(const Message& message);

}  // namespace mail
