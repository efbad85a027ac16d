#pragma once

#include "support/alerts/AlertPresenter.h"

#include <functional>
#include <vector>

/// Writes the alerts of the core to standard error and answers each with its cancelResponse(). Never waits.
/// Main thread only.
class ConsolePresenter : public AlertPresenter {
public:
    struct Message {
        QString key;  ///< Empty for an alert without a "don't warn again" box.
        QString title;
        QString message;
    };

    AlertAnswer present(const Alert& alert) override;
    void presentNonModal(const NonModalAlert& alert) override;

    /// Called with each message, also when it is written to standard error. May be null.
    std::function<void(const Message&)> onMessage;
    /// Called before a message is written to standard error. May be null.
    std::function<void()> beforeWriting;
    /// The path of the file that messages are about; may be empty.
    QString subject;
    /// Whether messages are written to standard error.
    bool writesToStandardError = true;

private:
    void write(const Message& message);
};
