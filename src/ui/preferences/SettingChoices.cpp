#include "ui/preferences/SettingChoices.h"

#include "convert/plan/ConversionCommand.h"
#include "settings/EncodingNames.h"
#include "settings/Settings.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"
#include "ui/preferences/SettingsBinder.h"

#include <array>

void addSubtitleEncodings(QComboBox& box) {
    const QList<EncodingName> encodings = subtitleEncodings();
    for (const EncodingName& name : encodings)
        box.addItem(name.title, static_cast<qint64>(name.encoding));
}

void addAudioMethods(QComboBox& box) {
    using enum ConversionMethod;
    const std::array<std::pair<ConversionMethod, QString>, settings::kMethods.size()> names = {
        {{AacStereo, Texts::tr("AAC in stereo")},
         {AacSurround, Texts::tr("AAC in 5.1")},
         {Ac3Stereo, Texts::tr("AC3 in stereo")},
         {Ac3Surround, Texts::tr("AC3 in 5.1")},
         {Copy, Texts::tr("Copy as it is")}}};
    const bool isStereo = box.property("methods").toString() == u"stereo";
    const qint64 stored = defaultInt(SettingsBinder::keysOf(box).first());
    box.clear();
    for (const auto& [method, name] : names) {
        const auto number = static_cast<qint64>(method);
        const bool widens = isStereo && (method == AacSurround || method == Ac3Surround);
        if (!widens || number == stored) box.addItem(name, number);
    }
}
