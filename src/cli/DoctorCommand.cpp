#include "app/diagnosis/Diagnosis.h"
#include "cli/Commands.h"
#include "cli/ExitStatus.h"
#include "cli/Output.h"
#include "settings/SettingsTable.h"
#include "support/base/Texts.h"

#include <algorithm>

namespace {

const char* wordOf(diagnosis::State state) {
    switch (state) {
        case diagnosis::State::Fine:
            return "fine";
        case diagnosis::State::Limited:
            return "limited";
        case diagnosis::State::Broken:
            return "broken";
    }
    return "";
}

QString shownWordOf(diagnosis::State state) {
    switch (state) {
        case diagnosis::State::Fine:
            return Texts::tr("fine");
        case diagnosis::State::Limited:
            return Texts::tr("limited");
        case diagnosis::State::Broken:
            return Texts::tr("broken");
    }
    return {};
}

}  // namespace

int runDoctor(const DoctorOptions& options) {
    constexpr int kTopicWidth = 12;
    constexpr int kStateWidth = 9;
    settings::registerDefaults();
    const QList<diagnosis::Finding> findings = diagnosis::findings(options.folders);
    for (const diagnosis::Finding& finding : findings) {
        const QString topic(finding.topic);
        if (options.json) {
            output::json({{"topic", topic}, {"state", wordOf(finding.state)}, {"text", finding.text}});
        } else {
            output::line(topic.leftJustified(kTopicWidth) +
                         shownWordOf(finding.state).leftJustified(kStateWidth) + output::shown(finding.text));
        }
    }
    const bool isBroken = std::ranges::any_of(
        findings, [](const auto& finding) { return finding.state == diagnosis::State::Broken; });
    return isBroken ? exitstatus::kFailure : exitstatus::kSuccess;
}
