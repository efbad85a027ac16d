#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QDialog>

class QCheckBox;

/// A non-modal alert. Deletes itself when it is closed; if it is not closed by its button, the completion is
/// not called. Main thread only.
class AlertPanel : public QDialog {
    Q_OBJECT

public:
    static constexpr int kWidth = 420;

    explicit AlertPanel(const NonModalAlert& alert);

    /// The height of a panel: that of the message at a width of 300, at least 30, plus 100 for all other
    /// parts; in device-independent pixels.
    static int heightFor(const QString& message, const QFont& font);

private:
    void buttonPressed();

    QCheckBox* m_checkBox = nullptr;
    std::function<void(bool)> m_completion;
};
