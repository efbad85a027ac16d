#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <vector>

/// A button's title with its key equivalent (empty: none), in the form of QKeySequence's portable text.
struct AlertButton {
    AlertButton(const char* buttonTitle)
        : title(QString::fromUtf8(buttonTitle)) {}      // NOLINT(google-explicit-constructor)
    AlertButton(QString buttonTitle, QString key = {})  // NOLINT(google-explicit-constructor)
        : title(std::move(buttonTitle)), keyEquivalent(std::move(key)) {}

    QString title;
    QString keyEquivalent;
};

/// The control between an alert's message and its buttons. `value` goes in as what the control shows first
/// and comes back as what the user made of it.
enum class AlertControl {
    None,
    Input,           ///< One line of text, 310 x 24 points; value: text.
    SecureInput,     ///< The same, hidden.
    CheckBox,        ///< 310 x 24, titled controlTitle; value: bool.
    ColorWell,       ///< 310 x 24; value: text "#rrggbb" or "#aarrggbb".
    InputText,       ///< Editable text, 310 x 200, scrolled vertically; value: text.
    OutputText,      ///< The same, not editable.
    SelectionPopup,  ///< 310 x 24, the items; value: index.
    SelectionMatrix  ///< Radio buttons, 269 wide, 17 a row, the items; value: index.
};

/// A modal alert with all that is needed to show it.
struct Alert {
    QString title;
    QString message;
    std::vector<AlertButton> buttons;  ///< None: the platform's single default button.
    QString icon;                      ///< Name of the icon; empty: the application's.
    QString suppressionTitle;          ///< Title of the don't-warn-again box; empty: no box.
    QString key;                       ///< Identifier of a don't-warn-again alert; empty for any other.
    AlertControl control = AlertControl::None;
    QString controlTitle;
    QStringList items;
    QVariant value;
    bool activatesApplication = true;  ///< Whether the application comes to the front first.
};

/// The responses to an alert's first, second and third button.
inline constexpr long kAlertFirstButton = 1000;
inline constexpr long kAlertSecondButton = 1001;
inline constexpr long kAlertThirdButton = 1002;

struct AlertAnswer {
    long response = kAlertFirstButton;
    bool suppressed = false;  ///< The don't-warn-again box was ticked.
    QVariant value;
};

/// A panel that does not hold the application up: 420 points wide.
struct NonModalAlert {
    QString title;
    QString message;
    QString button;
    QString icon;           ///< Empty: "AppIcon".
    QString checkboxTitle;  ///< Empty: no check box.
    /// Called on the main thread when the button is pressed: with a check box before the panel closes,
    /// without one after. May be null.
    std::function<void(bool checked)> completion;
};

/// Shows alerts. The window, the command line and the tests each bring one. Main thread only.
class AlertPresenter {
public:
    virtual ~AlertPresenter() = default;
    /// Whether present() lets the user think, while the event loop goes on.
    virtual bool waitsForUser() const { return false; }
    /// Returns when the alert is answered.
    virtual AlertAnswer present(const Alert& alert) = 0;
    /// Shows the alert attached to the main window and returns at once; `dismissed` is called with the
    /// answer. A presenter without a window answers as present() does.
    virtual void presentSheet(const Alert& alert, const std::function<void(const AlertAnswer&)>& dismissed) {
        dismissed(present(alert));
    }
    /// Returns at once.
    virtual void presentNonModal(const NonModalAlert& alert) = 0;
};

/// The presenter that the alert functions use; not owned. Without one, an alert is logged and answered with
/// its last button, the one that changes nothing.
void setAlertPresenter(AlertPresenter* presenter);
AlertPresenter& alertPresenter();
