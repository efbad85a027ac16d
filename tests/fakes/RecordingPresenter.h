#pragma once

#include "support/AlertPresenter.h"

#include <QList>
#include <QStringList>

/// Keeps what it should have shown and gives the answer that the test prepared.
class RecordingPresenter : public AlertPresenter {
public:
    AlertAnswer present(const Alert& alert) override {
        shown.append(alert);
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

    AlertAnswer answer;
    QList<Alert> shown;
    QList<NonModalAlert> shownNonModal;
};
