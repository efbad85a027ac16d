#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <functional>
#include <vector>

/// A button's title and its key equivalent as portable text of QKeySequence (empty: none).
struct AlertButton {
    AlertButton(const char* buttonTitle)
        : title(QString::fromUtf8(buttonTitle)) {}      // NOLINT(google-explicit-constructor)
    AlertButton(QString buttonTitle, QString key = {})  // NOLINT(google-explicit-constructor)
        : title(std::move(buttonTitle)), keyEquivalent(std::move(key)) {}

    /// A button that is also the answer to Escape and the like; see Alert::cancelResponse().
    static AlertButton cancelling(QString buttonTitle) {
        AlertButton button(std::move(buttonTitle));
        button.cancels = true;
        return button;
    }
    /// The same, and the answer to Return: for questions whose first button ends or deletes something.
    static AlertButton cancellingByDefault(QString buttonTitle) {
        AlertButton button = cancelling(std::move(buttonTitle));
        button.isDefault = true;
        return button;
    }

    QString title;
    QString keyEquivalent;
    bool cancels = false;
    bool isDefault = false;
};

/// The control between an alert's message and its buttons. Alert::value is its initial value,
/// AlertAnswer::value its final one. Sizes are in points.
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

/// The window that an alert belongs to; AtWork is used instead of one that is not shown.
enum class AlertWindow {
    AtWork,  ///< The active one, else the main window.
    Main,
    Preferences
};

/// The responses to an alert's first, second and third button.
inline constexpr long kAlertFirstButton = 1000;
inline constexpr long kAlertSecondButton = 1001;
inline constexpr long kAlertThirdButton = 1002;

/// The description of a modal alert.
struct Alert {
    QString title;
    QString message;
    QString subject;                   ///< What the message is about, in a line of its own; may be empty.
    std::vector<AlertButton> buttons;  ///< None: the platform's single default button.
    QString icon;                      ///< Name of the icon; empty: the application's.
    QString suppressionTitle;          ///< Title of the don't-warn-again box; empty: no box.
    QString key;                       ///< Identifier of a don't-warn-again alert; empty for any other.
    AlertControl control = AlertControl::None;
    QString controlTitle;
    QStringList items;
    QVariant value;
    bool activatesApplication = true;  ///< Whether to bring the application to the front first.
    AlertWindow window = AlertWindow::AtWork;

    /// The answer for Escape, the close button, the end of the application and presenters without a user: the
    /// button with `cancels`, else the last. It must never do what only the user may decide.
    long cancelResponse() const {
        const auto saysSo = std::ranges::find(buttons, true, &AlertButton::cancels);
        const auto position =
            saysSo == buttons.end() ? qMax<qsizetype>(std::ssize(buttons), 1) - 1 : saysSo - buttons.begin();
        return kAlertFirstButton + static_cast<long>(position);
    }
    /// The answer for Return: the button with `isDefault`, else the first.
    long defaultResponse() const {
        const auto saysSo = std::ranges::find(buttons, true, &AlertButton::isDefault);
        return kAlertFirstButton +
               (saysSo == buttons.end() ? 0 : static_cast<long>(saysSo - buttons.begin()));
    }
};

struct AlertAnswer {
    long response = kAlertFirstButton;
    bool suppressed = false;  ///< Whether the don't-warn-again box was ticked.
    QVariant value;
};

/// A panel that does not block the application; 420 points wide.
struct NonModalAlert {
    QString title;
    QString message;
    QString button;
    QString icon;           ///< Empty: "AppIcon".
    QString checkboxTitle;  ///< Empty: no check box.
    /// Called on the main thread when the button is pressed: before the panel closes if it has a check box,
    /// else afterwards. May be null.
    std::function<void(bool checked)> completion;
};

/// Shows alerts; implemented by the window, the command line and the tests. Main thread only.
class AlertPresenter {
public:
    virtual ~AlertPresenter() = default;
    /// Whether present() waits for a user and runs the event loop meanwhile.
    virtual bool waitsForUser() const { return false; }
    /// Blocks until the alert is answered.
    virtual AlertAnswer present(const Alert& alert) = 0;
    /// Shows the alert attached to the main window and returns at once; `dismissed` is called with the
    /// answer. A presenter without a window calls present() instead.
    virtual void presentSheet(const Alert& alert, const std::function<void(const AlertAnswer&)>& dismissed) {
        dismissed(present(alert));
    }
    /// Returns at once.
    virtual void presentNonModal(const NonModalAlert& alert) = 0;
};

/// The presenter that the alert functions use; not owned. If none is set, alerts are logged and answered with
/// their cancelResponse().
void setAlertPresenter(AlertPresenter* presenter);
AlertPresenter& alertPresenter();
