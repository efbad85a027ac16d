#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QDialog>

class QCheckBox;

/// An alert that does not hold the application up. It deletes itself when it is closed; closed by other means
/// than its button, the completion is not called. Main thread only.
class AlertPanel : public QDialog {
    Q_OBJECT

public:
    static constexpr int kWidth = 420;

    explicit AlertPanel(const NonModalAlert& alert);

    /// The height of a panel: that of the message laid out 300 wide, at least 30, and 100 for all else.
    static int heightFor(const QString& message, const QFont& font);

private:
    void buttonPressed();

    QCheckBox* m_checkBox = nullptr;
    std::function<void(bool)> m_completion;
};
