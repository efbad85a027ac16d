#include "support/alerts/Alert.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"
#include "support/base/Text.h"

namespace {

class SilentPresenter : public AlertPresenter {
public:
    AlertAnswer present(const Alert& alert) override {
        return {.response = alert.cancelResponse(), .suppressed = false, .value = alert.value};
    }
    void presentNonModal(const NonModalAlert&) override {}
};

AlertPresenter* thePresenter = nullptr;

constexpr size_t kMaximumButtons = 3;

std::vector<AlertButton> present(std::initializer_list<AlertButton> buttons) {
    std::vector<AlertButton> result;
    for (const AlertButton& button : buttons) {
        if (!button.title.isEmpty()) result.push_back(button);
    }
    return result;
}

Alert controlAlert(const QString& prompt, const QStringList& buttons, AlertControl control,
                   const QVariant& value = {}) {
    Alert alert;
    alert.message = prompt;
    for (const QString& title : buttons.first(qMin<qsizetype>(buttons.size(), kMaximumButtons)))
        alert.buttons.emplace_back(title);
    alert.control = control;
    alert.value = value;
    alert.activatesApplication = false;
    return alert;
}

AlertAnswer show(const Alert& alert) {
    return alertPresenter().present(alert);
}

QString logged(const QString& text) {
    return text::strippedOfNewlines(text);
}

long logAndShow(const Alert& alert) {
    logError("Alert: %@ - %@", logged(alert.title), logged(alert.message));
    const long response = show(alert).response;
    logError("Alert: finished %li", response);
    return response;
}

QString elided(const QString& title) {
    constexpr qsizetype kLongest = 150;
    constexpr qsizetype kEnd = 70;
    if (title.size() <= kLongest) return title;
    return makeString("%@ […] %@", title.first(kEnd), title.last(kEnd));
}

long input(const QString& prompt, const QStringList& buttons, QString& text, AlertControl control) {
    logError("Alert Input: %@@", logged(prompt));
    const AlertAnswer answer = show(controlAlert(prompt, buttons, control));
    text = answer.value.toString();
    logError("Alert Input: finished %li", answer.response);
    return answer.response;
}

}  // namespace

void setAlertPresenter(AlertPresenter* presenter) {
    thePresenter = presenter;
}

AlertPresenter& alertPresenter() {
    static SilentPresenter silent;
    return thePresenter ? *thePresenter : silent;
}

long alert_customicon(const QString& title, const QString& message, const AlertButton& defaultButton,
                      const AlertButton& alternate, const AlertButton& other, const QString& icon) {
    Alert alert;
    alert.title = title;
    alert.message = message;
    alert.buttons = present({defaultButton, alternate, other});
    alert.icon = icon;
    return logAndShow(alert);
}

long alert(const QString& title, const QString& message, const AlertButton& defaultButton,
           const AlertButton& alternate, const AlertButton& other) {
    return alert_customicon(title, message, defaultButton, alternate, other, {});
}

long alert_described(const Alert& description) {
    return logAndShow(description);
}

long alert_apptitled(const QString& message, const AlertButton& defaultButton, const AlertButton& alternate,
                     const AlertButton& other) {
    return alert(ApplicationInfo::name(), message, defaultButton, alternate, other);
}

long alert_apptitled_over(AlertWindow window, const QString& message, const AlertButton& button) {
    Alert alert;
    alert.title = ApplicationInfo::name();
    alert.message = message;
    alert.buttons = present({button});
    alert.window = window;
    return logAndShow(alert);
}

long alert_input(const QString& prompt, const QStringList& buttons, QString& text) {
    return input(prompt, buttons, text, AlertControl::Input);
}

long alert_inputsecure(const QString& prompt, const QStringList& buttons, QString& text) {
    return input(prompt, buttons, text, AlertControl::SecureInput);
}

long alert_checkbox(const QString& title, const QString& message, const QStringList& buttons,
                    const QString& checkboxTitle, bool& state) {
    Alert alert = controlAlert(message, buttons, AlertControl::CheckBox, state);
    alert.title = title;
    alert.controlTitle = checkboxTitle;
    logError("Alert Checkbox: %@ - %@", logged(title), logged(message));
    const AlertAnswer answer = show(alert);
    state = answer.value.toBool();
    logError("Alert Checkbox: finished %li %lu", answer.response, static_cast<unsigned long>(state));
    return answer.response;
}

long alert_colorwell(const QString& prompt, const QStringList& buttons, QString& color) {
    logError("Alert Colorwell: %@", logged(prompt));
    const AlertAnswer answer = show(controlAlert(prompt, buttons, AlertControl::ColorWell, color));
    color = answer.value.toString();
    logError("Alert Colorwell: finished %li", answer.response);
    return answer.response;
}

long alert_inputtext(const QString& prompt, const QStringList& buttons, QString& text) {
    logError("Alert Inputtext: %@", logged(prompt));
    const AlertAnswer answer = show(controlAlert(prompt, buttons, AlertControl::InputText, text));
    text = answer.value.toString();
    logError("Alert Inputtext: finished %li %@", answer.response, text);
    return answer.response;
}

long alert_outputtext(const QString& prompt, const QString& text, const QStringList& buttons) {
    logError("Alert Outputtext: %@", logged(prompt));
    const AlertAnswer answer = show(controlAlert(prompt, buttons, AlertControl::OutputText, text));
    logError("Alert Outputtext: finished %li", answer.response);
    return answer.response;
}

long alert_selection_popup(const QString& prompt, const QStringList& buttons, const QStringList& titles,
                           qsizetype& index) {
    Alert alert = controlAlert(prompt, buttons, AlertControl::SelectionPopup, 0);
    alert.items = titles;
    logError("Alert Selectionpopup: %@", logged(prompt));
    const AlertAnswer answer = show(alert);
    index = answer.value.toInt();
    logError("Alert Selectionpopup: finished %li %lu", answer.response, static_cast<unsigned long>(index));
    return answer.response;
}

long alert_selection_matrix(const QString& prompt, const QStringList& buttons, const QStringList& titles,
                            qsizetype& index) {
    Alert alert = controlAlert(prompt, buttons, AlertControl::SelectionMatrix, 0);
    for (const QString& title : titles)
        alert.items.append(elided(title));
    logError("Alert Selectionmatrix: %@", logged(prompt));
    const AlertAnswer answer = show(alert);
    index = answer.value.toInt();
    logError("Alert Selectionmatrix: finished %li %lu", answer.response, static_cast<unsigned long>(index));
    return answer.response;
}

void alert_nonmodal(const QString& title, const QString& message, const QString& button) {
    alert_nonmodal_customicon(title, message, button, {});
}

void alert_nonmodal_customicon(const QString& title, const QString& message, const QString& button,
                               const QString& icon) {
    alert_nonmodal_customicon_block(title, message, button, icon, {});
}

void alert_nonmodal_customicon_block(const QString& title, const QString& message, const QString& button,
                                     const QString& icon, const std::function<void()>& block) {
    const auto completion = [block](bool) {
        if (block) block();
    };
    alertPresenter().presentNonModal({title, message, button, icon, {}, completion});
}

void alert_nonmodal_checkbox(const QString& title, const QString& message, const QString& button,
                             const QString& checkboxTitle, const std::function<void(bool)>& block) {
    alertPresenter().presentNonModal({title, message, button, {}, checkboxTitle, block});
}
