#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QList>
#include <QStringList>

#include <functional>

/// Records the alerts and gives the answer that the test prepared.
class RecordingPresenter : public AlertPresenter {
public:
    AlertAnswer present(const Alert& alert) override {
        shown.append(alert);
        if (whileShown) whileShown();
        AlertAnswer given = answer;
        if (given.response == kNobody) given.response = alert.cancelResponse();
        return given;
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

    static constexpr long kNobody = 0;  ///< The user presses Escape.
    AlertAnswer answer{.response = kNobody, .suppressed = false, .value = {}};
    bool waits = false;                ///< Whether alerts wait for a user, as those of the window do.
    std::function<void()> whileShown;  ///< Called while an alert is open; may be null.
    QList<Alert> shown;
    QList<NonModalAlert> shownNonModal;
};
