#include "support/alerts/DontWarnAgain.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/processes/Dispatch.h"
#include "support/store/Defaults.h"

namespace {

/// Shows `alert`; stores 1 under `key` if the user ticked its box.
long showAndStore(const QString& key, const Alert& alert) {
    const AlertAnswer answer = alertPresenter().present(alert);
    setDefaultInt(key, answer.suppressed ? 1 : 0);
    return answer.response;
}

void onMainThread(const Block& block) {
    if (isMainThread()) {
        block();
    } else {
        dispatch_async_main(block);
    }
}

Alert suppressibleAlert(const QString& title, const QString& message, const QString& suppressionTitle) {
    Alert alert;
    alert.title = title;
    alert.message = message;
    alert.suppressionTitle = suppressionTitle;
    return alert;
}

QString logged(const QString& text) {
    return text::strippedOfNewlines(text);
}

QString keyForVersion(const QString& identifier) {
    return makeString("_%@_%@_asked", identifier, ApplicationInfo::version());
}

void showUnlessSuppressed(const QString& key, const Alert& alert, const QString& logName) {
    if (defaultInt(key) != 0) return;
    logError("%@: %@ - %@", logName, logged(alert.title), logged(alert.message));
    showAndStore(key, alert);
    logError("%@: finished", logName);
}

}  // namespace

void alert_dontwarnagain_version(const QString& identifier, const QString& title, const QString& message,
                                 const QString& button, const QString& suppressionTitle) {
    const QString key = keyForVersion(identifier);
    Alert alert = suppressibleAlert(title, message, suppressionTitle);
    alert.buttons = {button};
    alert.key = identifier;
    onMainThread([=] { showUnlessSuppressed(key, alert, "Alert Dontwarnagain"); });
}

void alert_dontwarnagain_list(const QStringList& identifiers, const QString& title, const QString& message,
                              const QString& text, const QString& button, const QString& suppressionTitle) {
    Alert alert = suppressibleAlert(title, message, identifiers.isEmpty() ? QString() : suppressionTitle);
    alert.buttons = {button};
    alert.control = AlertControl::OutputText;
    alert.value = text;
    logError("Alert Dontwarnagain: %@ - %@ %@", logged(title), logged(message), logged(text));
    const AlertAnswer answer = alertPresenter().present(alert);
    for (const QString& identifier : identifiers)
        setDefaultInt(keyForVersion(identifier), answer.suppressed ? 1 : 0);
    logError("Alert Dontwarnagain: finished");
}

bool isWarningSuppressed(const QString& identifier) {
    return !identifier.isEmpty() && defaultInt(keyForVersion(identifier)) != 0;
}

void alert_dontwarnagain_ever(const QString& identifier, const QString& title, const QString& message,
                              const QString& button, const QString& suppressionTitle) {
    const QString key = makeString("_%@_asked", identifier);
    Alert alert = suppressibleAlert(title, message, suppressionTitle);
    alert.buttons = {button};
    alert.key = identifier;
    onMainThread([=] { showUnlessSuppressed(key, alert, "Alert Dontwarnagainever"); });
}

// NOLINTNEXTLINE(bugprone-reserved-identifier)
long _alert_dontwarnagain_prefs(const QString& key, const QString& title, const QString& message,
                                const AlertButton& defaultButton, const AlertButton& alternate,
                                const QString& suppressionTitle) {
    if (defaultInt(key) != 0) return -1;
    Alert alert = suppressibleAlert(title, message, suppressionTitle);
    for (const AlertButton& button : {defaultButton, alternate}) {
        if (!button.title.isEmpty()) alert.buttons.push_back(button);
    }
    alert.key = key;
    logError("Alert: %@ - %@", logged(title), logged(message));
    const long response = showAndStore(key, alert);
    logError("Alert: finished %li", response);
    return response;
}
