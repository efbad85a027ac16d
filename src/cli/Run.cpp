#include "cli/Run.h"

#include "convert/RunJournal.h"
#include "settings/SettingsTable.h"
#include "support/base/ApplicationInfo.h"
#include "support/desktop/DBusDesktop.h"
#include "support/reports/CrashLogs.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"
#include "support/store/LogRings.h"

Run::Run(const QMap<QString, QVariant>& overrides, DesktopUse desktop) {
    settings::registerDefaults();
    logrings::install();
    for (auto it = overrides.cbegin(); it != overrides.cend(); ++it)
        standardUserDefaults().setOverride(it.key(), it.value());
    setAlertPresenter(&m_presenter);
    if (desktop == DesktopUse::Real) {
        m_desktop =
            std::make_unique<DBusDesktop>(ApplicationInfo::name(), ApplicationInfo::bundleIdentifier());
        setSharedDesktop(m_desktop.get());
    }
    m_library = std::make_unique<QuillonLib>();
    RunJournal::cleanUpAfterCrashes();
    // It writes to the settings; commands that only read must not change them.
    if (desktop == DesktopUse::Real) crashlogs::tidyUp();
}

Run::~Run() {
    m_library.reset();
    setSharedDesktop(nullptr);
    setAlertPresenter(nullptr);
}
