#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <functional>
#include <vector>

/// A button's title with its key equivalent (empty: none), in the form of QKeySequence's portable text.
struct AlertButton {
    AlertButton(const char* buttonTitle)
        : title(QString::fromUtf8(buttonTitle)) {}      // NOLINT(google-explicit-constructor)
    AlertButton(QString buttonTitle, QString key = {})  // NOLINT(google-explicit-constructor)
        : title(std::move(buttonTitle)), keyEquivalent(std::move(key)) {}

    /// A button that is also the answer of a user who gives none; see Alert::cancelResponse().
    static AlertButton cancelling(QString buttonTitle) {
        AlertButton button(std::move(buttonTitle));
        button.cancels = true;
        return button;
    }

    QString title;
    QString keyEquivalent;
    bool cancels = false;
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

/// The window that an alert belongs to. One that is not shown is replaced by the window at work.
enum class AlertWindow {
    AtWork,  ///< The active one, else the main window.
    Main,
    Preferences
};

/// The responses to an alert's first, second and third button.
inline constexpr long kAlertFirstButton = 1000;
inline constexpr long kAlertSecondButton = 1001;
inline constexpr long kAlertThirdButton = 1002;

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
    AlertWindow window = AlertWindow::AtWork;

    /// What Escape, the close button, the end of the application and a presenter without a user answer: the
    /// button that says so, else the last. It must never do what only a user may decide.
    long cancelResponse() const {
        const auto saysSo = std::ranges::find(buttons, true, &AlertButton::cancels);
        const auto position =
            saysSo == buttons.end() ? qMax<qsizetype>(std::ssize(buttons), 1) - 1 : saysSo - buttons.begin();
        return kAlertFirstButton + static_cast<long>(position);
    }
};

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
/// its cancelResponse().
void setAlertPresenter(AlertPresenter* presenter);
AlertPresenter& alertPresenter();
