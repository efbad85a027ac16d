#pragma once

#include "support/alerts/AlertPresenter.h"

#include <functional>
#include <vector>

/// Says on standard error what the core would say in an alert, and answers with its cancelResponse(). Nothing
/// ever waits.
class ConsolePresenter : public AlertPresenter {
public:
    struct Message {
        QString key;  ///< Empty for an alert without don't-warn-again.
        QString title;
        QString message;
    };

    AlertAnswer present(const Alert& alert) override;
    void presentNonModal(const NonModalAlert& alert) override;

    /// Called with each message, beside standard error. May be null.
    std::function<void(const Message&)> onMessage;
    /// Called before something is written to standard error. May be null.
    std::function<void()> beforeWriting;
    /// Whether messages go to standard error.
    bool writesToStandardError = true;

private:
    void say(const Message& message);
};
