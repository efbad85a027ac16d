#include "cli/ConsolePresenter.h"

#include "cli/Output.h"
#include "support/base/Format.h"

AlertAnswer ConsolePresenter::present(const Alert& alert) {
    write({alert.key, alert.title, alert.message});
    return {.response = alert.cancelResponse(), .suppressed = false, .value = alert.value};
}

void ConsolePresenter::presentNonModal(const NonModalAlert& alert) {
    write({{}, alert.title, alert.message});
}

void ConsolePresenter::write(const Message& message) {
    if (writesToStandardError) {
        if (beforeWriting) beforeWriting();
        const QString text = output::about(subject, message.message);
        output::error(message.title.isEmpty() ? text : makeString("%@: %@", message.title, text));
    }
    if (onMessage) onMessage(message);
}
