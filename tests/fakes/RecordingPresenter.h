#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QList>
#include <QStringList>

#include <functional>

/// Keeps what it should have shown and gives the answer that the test prepared.
class RecordingPresenter : public AlertPresenter {
public:
    AlertAnswer present(const Alert& alert) override {
        shown.append(alert);
        if (whileShown) whileShown();
        return answer;
    }
    void presentNonModal(const NonModalAlert& alert) override { shownNonModal.append(alert); }

    QStringList messages() const {
        QStringList result;
        for (const Alert& alert : shown)
            result.append(alert.message);
        return result;
    }
    QStringList keys() const {
        QStringList result;
        for (const Alert& alert : shown)
            result.append(alert.key);
        return result;
    }

    bool waitsForUser() const override { return waits; }

    AlertAnswer answer;
    bool waits = false;                ///< Whether a user is there who thinks, as in front of the window.
    std::function<void()> whileShown;  ///< What happens while an alert is open; may be null.
    QList<Alert> shown;
    QList<NonModalAlert> shownNonModal;
};
