#include "support/alerts/SaveSettings.h"

#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"

void reportSettingsProblemOnce() {
    static bool reported = false;
    const QString problem = standardUserDefaults().problem();
    if (reported || problem.isEmpty()) return;
    reported = true;
    showInTurn([problem] { alert_apptitled(problem, Texts::tr("OK")); });
}

void saveSettings() {
    if (!standardUserDefaults().synchronise()) reportSettingsProblemOnce();
}
