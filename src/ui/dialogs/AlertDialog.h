#pragma once

#include "support/alerts/AlertPresenter.h"
#include "ui/dialogs/AlertControls.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;

/// A modal alert: icon, title, message, control, "don't warn again" box, buttons in the platform's order.
/// Return answers with the first button; Esc and the window's close button answer with
/// Alert::cancelResponse(). Never larger than its screen; a long message scrolls. Main thread only.
class AlertDialog : public QDialog {
    Q_OBJECT

public:
    /// `parent` may be null; the size is limited by its screen, else by the primary one.
    explicit AlertDialog(const Alert& alert, QWidget* parent = nullptr);

    /// Valid when the dialog has finished; before that, and if it was not ended by the user, the alert's
    /// cancelResponse().
    AlertAnswer answer() const;

private:
    void addButtons(const Alert& alert);
    void setTexts(const Alert& alert, int width);

    QDialogButtonBox* m_buttonBox = nullptr;
    AlertText* m_title = nullptr;
    AlertText* m_message = nullptr;
    QCheckBox* m_suppression = nullptr;
    AlertAccessory m_accessory;
    long m_response = kAlertFirstButton;
};
