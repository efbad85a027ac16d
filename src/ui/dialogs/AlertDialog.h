#pragma once

#include "support/alerts/AlertPresenter.h"
#include "ui/dialogs/AlertControls.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;

/// A modal alert: icon, title, message, control, don't-warn-again box, buttons in the platform's order.
/// Return answers with the first button, Esc and the window's close button with Alert::cancelResponse(). It
/// never grows past its screen; a long message scrolls. Main thread only.
class AlertDialog : public QDialog {
    Q_OBJECT

public:
    /// `parent` may be null; its screen, else the primary one, bounds the size.
    explicit AlertDialog(const Alert& alert, QWidget* parent = nullptr);

    /// Valid once the dialog has finished; before, and when something else than the user ended it, the
    /// alert's cancelResponse().
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
