#include "ui/preferences/SettingChoices.h"

#include "convert/plan/ConversionCommand.h"
#include "settings/Settings.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"
#include "ui/preferences/SettingsBinder.h"

#include <algorithm>
#include <array>

namespace {

/// The description of an encoding for users who do not know its name; empty: none.
QString writingOf(const QString& encoding) {
    struct Writing {
        QString name;
        QStringList encodings;
    };
    static const std::array writings = {
        Writing{Texts::tr("Western European"), {"CP1252", "LATIN1", "ISO-8859-1", "ISO-8859-15"}},
        Writing{Texts::tr("Central European"), {"CP1250", "LATIN2", "ISO-8859-2"}},
        Writing{Texts::tr("South European"), {"LATIN3", "ISO-8859-3"}},
        Writing{Texts::tr("Southeast European"), {"ISO-8859-16"}},
        Writing{Texts::tr("Nordic"), {"LATIN6", "ISO-8859-10"}},
        Writing{Texts::tr("Baltic"), {"CP1257", "LATIN4", "LATIN7", "ISO-8859-4", "ISO-8859-13"}},
        Writing{Texts::tr("Celtic"), {"LATIN8", "ISO-8859-14"}},
        Writing{Texts::tr("Cyrillic"), {"CP1251", "ISO-8859-5"}},
        Writing{Texts::tr("Greek"), {"CP1253", "ISO-8859-7"}},
        Writing{Texts::tr("Turkish"), {"CP1254", "LATIN5", "ISO-8859-9"}},
        Writing{Texts::tr("Hebrew"), {"CP1255", "ISO-8859-8"}},
        Writing{Texts::tr("Arabic"), {"CP1256", "ISO-8859-6"}},
        Writing{Texts::tr("Thai"), {"CP874", "ISO-8859-11"}},
        Writing{Texts::tr("Vietnamese"), {"CP1258"}},
        Writing{Texts::tr("Chinese, simplified"), {"CP936"}},
    };
    const auto* found = std::ranges::find_if(
        writings, [&](const Writing& writing) { return writing.encodings.contains(encoding); });
    return found == writings.end() ? QString() : found->name;
}

}  // namespace

void addSubtitleEncodings(QComboBox& box) {
    box.addItem(Texts::tr("Automatic (UTF-8 or UTF-16)"), 0);
    for (const settings::Choice& choice : settings::ExternalSubtitleEncoding.choices.list) {
        const QString encoding = choice.word;
        // This part of the standard was abandoned; no converter supports it.
        if (encoding.isEmpty() || encoding == u"ISO-8859-12") continue;
        const QString writing = writingOf(encoding);
        box.addItem(writing.isEmpty() ? encoding : QStringLiteral("%1 – %2").arg(encoding, writing),
                    choice.number);
    }
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
