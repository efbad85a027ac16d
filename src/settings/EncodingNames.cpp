#include "settings/EncodingNames.h"

#include "settings/Settings.h"
#include "support/base/Texts.h"

#include <QStringList>

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

QList<EncodingName> subtitleEncodings() {
    QList<EncodingName> names = {{SubtitleEncoding{}, Texts::tr("Automatic (UTF-8 or UTF-16)")}};
    for (const settings::Choice& choice : settings::ExternalSubtitleEncoding.choices.list) {
        const QString encoding = choice.word;
        // This part of the standard was abandoned; no converter supports it.
        if (encoding.isEmpty() || encoding == u"ISO-8859-12") continue;
        const QString writing = writingOf(encoding);
        names.append({static_cast<SubtitleEncoding>(choice.number),
                      writing.isEmpty() ? encoding : QStringLiteral("%1 – %2").arg(encoding, writing)});
    }
    return names;
}
